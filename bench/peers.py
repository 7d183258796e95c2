#!/usr/bin/python3
"""Times our routines and the usual free tools on the same cases, in one run.

For each case it runs our benchmark (google-benchmark, best of the
repetitions) and the peer (best of a few calls), and prints both times and
peer time / our time: above 1 means we are faster. Not run by CI.

Peers, all from Debian packages:
    apt-get install python3-scipy python3-pywt python3-statsmodels r-base-core

    bench/peers.py --build build-num      # the build tree holding bench/

Every command of a shared machine's build lock applies to this script too:
    flock /tmp/tarnic-build.lock bench/peers.py --build build-num
"""
import argparse
import json
import shutil
import subprocess
import sys
import time

import numpy as np


def best_of(call, repeats=5):
    best = float("inf")
    for _ in range(repeats):
        start = time.perf_counter()
        call()
        best = min(best, time.perf_counter() - start)
    return best


def ours(build, program, name, repetitions=5):
    """Best real time of one of our benchmarks, in seconds."""
    out = subprocess.run(
        [f"{build}/bench/{program}", f"--benchmark_filter=^{name}$",
         "--benchmark_format=json", f"--benchmark_repetitions={repetitions}"],
        check=True, capture_output=True, text=True).stdout
    runs = [b for b in json.loads(out)["benchmarks"] if b.get("run_type") == "iteration"]
    if not runs:
        raise RuntimeError(f"no benchmark {name} in {program}")
    scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    return min(b["real_time"] * scale[b["time_unit"]] for b in runs)


def ar_noise(n, seed=7):
    rng = np.random.default_rng(seed)
    e = rng.standard_normal(n)
    x = np.empty(n)
    x1 = x2 = 0.0
    for t in range(n):
        v = 0.75 * x1 - 0.5 * x2 + e[t]
        x[t] = v
        x2, x1 = x1, v
    return x.astype(np.float32).astype(np.float64)


def random_walk_with_wave(n, seed=2024):
    rng = np.random.default_rng(seed)
    return np.cumsum(rng.standard_normal(n)) + 20.0 * np.sin(np.arange(n) * 0.01)


# --- Peers -----------------------------------------------------------------

def r_seconds(expression, setup="", repeats=3):
    """Best time of an R expression, measured inside R (no start-up cost)."""
    if not shutil.which("Rscript"):
        return None
    script = (f"set.seed(7); {setup}; best <- Inf; for (i in 1:{repeats}) "
              f"{{ t <- proc.time()[['elapsed']]; {expression}; "
              f"best <- min(best, proc.time()[['elapsed']] - t) }}; cat(best)")
    out = subprocess.run(["Rscript", "-e", script], check=True, capture_output=True, text=True)
    return float(out.stdout.strip().split()[-1])


R_AR_NOISE = "x <- as.numeric(arima.sim(list(ar = c(0.75, -0.5)), n = {n}))"
R_BURG_SPECTRUM = ("f <- ar.burg(w, aic = FALSE, order.max = 204, demean = TRUE, var.method = 2); "
                   "a <- c(1, -f$ar, rep(0, 2048 - 205)); s <- f$var.pred / Mod(fft(a)[1:1024])^2")


def torrence_compo_cwt(x, scales):
    """Morlet CWT as in Torrence & Compo: pad to a power of two above 2N,
    multiply by the daughter wavelet per scale, inverse FFT; |W|^2."""
    n = len(x)
    length = 1 << int(np.ceil(np.log2(2 * n)))
    xhat = np.fft.fft(x - x.mean(), length)
    k = np.arange(1, length // 2 + 1)
    w = np.concatenate(([0.0], k, -k[:(length - 1) // 2][::-1])) * 2 * np.pi / length
    power = np.empty((len(scales), n))
    for i, s in enumerate(scales):
        daughter = np.sqrt(2 * np.pi * s) * np.pi ** -0.25 * np.exp(-0.5 * (s * w - 6.0) ** 2) * (w > 0)
        power[i] = np.abs(np.fft.ifft(xhat * daughter)[:n]) ** 2
    return power


def numpy_mfdfa(x, scales, qs, order):
    """MFDFA on the series itself: per scale one Vandermonde fit for all
    segments (lstsq on the segments side by side), std measure, power means."""
    logz = np.empty((len(scales), len(qs)))
    for i, s in enumerate(scales):
        k = len(x) // s
        y = x[:k * s].reshape(k, s).T
        t = np.linspace(-1, 1, s)
        v = np.vander(t, order + 1)
        coef, *_ = np.linalg.lstsq(v, y, rcond=None)
        r = np.sqrt(np.mean((y - v @ coef) ** 2, axis=0))
        lr = np.log(r)
        for j, q in enumerate(qs):
            logz[i, j] = lr.mean() if abs(q) < 1e-12 else np.log(np.mean(np.exp(q * lr))) / q
    return logz


def bandpass_rfft(x, shortest, longest):
    n = len(x)
    spectrum = np.fft.rfft(x)
    f = np.arange(len(spectrum)) / n
    spectrum[(f < 1.0 / longest) | (f > 1.0 / shortest)] = 0
    return np.fft.irfft(spectrum, n)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default="build", help="build tree with bench/ (default build)")
    args = parser.parse_args()
    b = args.build

    import scipy.fft
    import scipy.ndimage
    import scipy.signal

    rows = []

    def case(label, our_time, peer_name, peer_time):
        rows.append((label, our_time, peer_name, peer_time))
        ratio = f"{peer_time / our_time:6.1f}" if peer_time else "   n/a"
        peer = f"{peer_time * 1e3:10.2f}" if peer_time else "       n/a"
        print(f"{label:44s} {our_time * 1e3:10.2f} ms  {peer_name:28s} {peer} ms  x{ratio}",
              flush=True)

    print(f"{'case':44s} {'ours':>13s}  {'peer':28s} {'peer time':>13s}  ratio")

    x2048 = ar_noise(2048)
    burg = ours(b, "bench_spectra", "BurgH/204")
    case("BurgH order 204, 2048 samples, 1024 points", burg, "R ar.burg + fft",
         r_seconds(R_BURG_SPECTRUM + "; NULL",
                   setup=R_AR_NOISE.format(n=2048) + "; w <- x", repeats=20))
    try:
        from statsmodels.regression.linear_model import burg as sm_burg

        def statsmodels_burg():
            phi, sigma2 = sm_burg(x2048 - x2048.mean(), order=204, demean=False)
            a = np.zeros(2048)
            a[0] = 1
            a[1:205] = -phi
            return sigma2 / np.abs(np.fft.rfft(a)[:1024]) ** 2
        case("BurgH order 204 (statsmodels)", burg, "statsmodels burg + rfft",
             best_of(statsmodels_burg, 5))
    except ImportError:
        pass

    case("AR evolution: 1307 windows of 2048, one core",
         ours(b, "bench_spectra", "BurgMapWindows/2048/75", 2), "R ar.burg loop",
         r_seconds("for (w0 in seq(0, by = 75, length.out = 1307)) { w <- x[(w0 + 1):(w0 + 2048)]; "
                   + R_BURG_SPECTRUM + " }", setup=R_AR_NOISE.format(n=100000), repeats=1))

    signal = random_walk_with_wave(10000)
    periods = np.exp(np.linspace(np.log(2.0), np.log(2500.0), 200))
    case("Morlet 10,000 x 200", ours(b, "bench_multiscale", "MorletTransform10000x200/real_time"),
         "numpy Torrence-Compo", best_of(lambda: torrence_compo_cwt(signal, periods / 1.0330436), 3))
    try:
        import pywt
        case("Morlet 10,000 x 200 (pywt)", ours(b, "bench_multiscale",
                                                 "MorletTransform10000x200/real_time"),
             "pywt.cwt cmor fft", best_of(lambda: pywt.cwt(signal, periods / 1.0330436,
                                                            "cmor1.5-1.0", method="fft"), 3))
    except ImportError:
        pass

    scales = np.unique(np.round(np.exp(np.linspace(np.log(20), np.log(2000), 200)))).astype(int)
    case("MF DFA 10,000, 200 q, order 4", ours(b, "bench_multiscale",
                                                "MfdfaWindowRun10000/4/real_time"),
         "numpy MFDFA", best_of(lambda: numpy_mfdfa(signal, scales, np.linspace(-10, 10, 200), 4), 3))

    for n in (1_000_000, 999_983):
        x = ar_noise(n)
        case(f"Fourier resample {n:,} -> {int(n / 2.5):,}", ours(b, "bench_spectra", f"DownSample/{n}"),
             "scipy.signal.resample", best_of(lambda: scipy.signal.resample(x, int(n / 2.5)), 3))
        y = random_walk_with_wave(n)
        case(f"Band-pass {n:,}", ours(b, "bench_smoothing", f"FourierBandPass/{n}"),
             "scipy.fft rfft/mask/irfft", best_of(lambda: bandpass_rfft(y, 20.0, 200.0), 3))

    x = ar_noise(1_000_000)
    case("Welch 10^6, windows of 2048", ours(b, "bench_spectra", "SpectAn/1"),
         "scipy.signal.welch", best_of(lambda: scipy.signal.welch(x, nperseg=2048), 3))
    walk = random_walk_with_wave(1_000_000)
    case("Gaussian kernel smoothing 10^6, radius 1000", ours(b, "bench_smoothing", "KernelSmooth/1000"),
         "scipy gaussian_filter1d", best_of(lambda: scipy.ndimage.gaussian_filter1d(walk, 1000.0), 3))
    case("Local polynomial 10^6, radius 1000, order 10",
         ours(b, "bench_smoothing", "LocalPolynomial/1000/10"),
         "scipy savgol_filter", best_of(lambda: scipy.signal.savgol_filter(walk, 2001, 10), 3))
    return 0


if __name__ == "__main__":
    sys.exit(main())

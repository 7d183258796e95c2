// Worker threads with a way back. Where the system cannot start a thread
// (std::async and std::thread throw std::system_error when it refuses), the
// work runs on the calling thread instead and gives the same result: a busy
// machine makes the program slower, never wrong and never stopped.
#pragma once

#include <atomic>
#include <exception>
#include <future>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace tarnic {

// While set, every start of a worker thread fails as on a system out of
// threads; the tests set it to follow the way back. Each program (and
// Tarnic.dll) has a flag of its own.
inline std::atomic<bool> refuseWorkerThreads{false};

// A thread of type Thread (std::thread, std::jthread) running f(args...);
// throws std::system_error when it cannot be started.
template <class Thread, class F, class... Args> Thread startThread(F&& f, Args&&... args) {
    if (refuseWorkerThreads.load(std::memory_order_relaxed))
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    return Thread(std::forward<F>(f), std::forward<Args>(args)...);
}

// The result of work(), computed on a new thread, or, when none can be
// started, on the thread that asks for it (a deferred future).
template <class Work> std::future<std::invoke_result_t<Work&>> startWorker(Work work) {
    if (!refuseWorkerThreads.load(std::memory_order_relaxed)) {
        try {
            return std::async(std::launch::async, work);
        } catch (const std::system_error&) {
        }
    }
    return std::async(std::launch::deferred, std::move(work));
}

// Runs work(k) for k = 0 .. workers-1, all but the first on threads of their
// own, and returns when all are done. A thread that cannot be started has its
// share run on the calling thread after its own. An exception thrown by any
// share is thrown again here once all have finished (the first one caught).
template <class Work> void runWorkers(std::size_t workers, const Work& work) {
    std::vector<std::exception_ptr> failures(workers);
    const auto share = [&work, &failures](std::size_t k) {
        try {
            work(k);
        } catch (...) {
            failures[k] = std::current_exception();
        }
    };
    std::size_t started = 1;
    {
        std::vector<std::jthread> threads;
        for (; started < workers; ++started) {
            try {
                threads.push_back(startThread<std::jthread>([&share, started] { share(started); }));
            } catch (const std::system_error&) {
                break;
            }
        }
        share(0);
        for (std::size_t k = started; k < workers; ++k)
            share(k);
    } // joins the threads
    for (const std::exception_ptr& failure : failures)
        if (failure) std::rethrow_exception(failure);
}

} // namespace tarnic

// The C binding of Tarnic.dll: each routine converts its arguments, calls the C++
// routine and writes the results through the pointers. No exception leaves a
// routine; a null pointer for a number reads as 0 and an output through a null
// pointer is skipped.
#include "numeric/tarnic_api.h"

#include "numeric/demultiplex.h"
#include "numeric/intake.h"

#include <algorithm>
#include <span>

namespace {

std::int32_t valueOr0(const std::int32_t* p) {
    return p ? *p : 0;
}

} // namespace

void CountFileRecords_dll(const std::int16_t* pathCodes, std::int32_t* pathLen, std::int32_t* nrec,
                          std::int32_t* status) {
    tarnic::RecordCount count{0, 1}; // "wrong structure within record 1" if anything fails
    try {
        count = tarnic::countFileRecords(tarnic::pathFromCodes(pathCodes, valueOr0(pathLen)));
    } catch (...) {
    }
    if (nrec) *nrec = count.records;
    if (status) *status = count.status;
}

void ReadSignalFile_dll(const std::int16_t* pathCodes, std::int32_t* pathLen, std::int32_t* nrec,
                        float* signal) {
    const std::int32_t n = valueOr0(nrec);
    if (signal == nullptr || n <= 0) return;
    const std::span<float> out(signal, static_cast<std::size_t>(n));
    try {
        tarnic::readSignalFile(tarnic::pathFromCodes(pathCodes, valueOr0(pathLen)), out);
    } catch (...) {
        std::fill(out.begin(), out.end(), 0.0f);
    }
}

void DemulplexTable_dll(const std::int16_t* pathCodes, std::int32_t* pathLen, std::int32_t* nrec) {
    try {
        tarnic::demultiplexTable(tarnic::pathFromCodes(pathCodes, valueOr0(pathLen)),
                                 valueOr0(nrec));
    } catch (...) {
    }
}

// The binary interface of Tarnic.dll.
//
// Every routine is a C procedure without a result. Every argument is passed by
// reference (a pointer), numbers included, and a routine may overwrite any number
// it receives. An array is passed by its first element; its length travels in a
// separate argument and the caller sizes every output array before the call.
// A file name crosses as an array of UTF-16 code units (one per character of the
// full path, no terminator) plus the number of code units.
//
// The program never links against this library: it loads Tarnic.dll at run time
// and resolves each routine by the name below (see core/tarniclibrary.h).
#pragma once

#include <cstdint>

#if defined(TARNIC_BUILDING_LIBRARY)
#define TARNIC_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define TARNIC_EXPORT extern "C"
#endif

// Checks a plain-text table and counts its records (see numeric/intake.h).
// status: 0 the file has size zero; nrec + 1 the record of that number has a
// wrong structure; -1 a good file of nrec records.
TARNIC_EXPORT void CountFileRecords_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                        std::int32_t* nrec, std::int32_t* status);

// Reads the first column of the first nrec records into signal[0 .. nrec-1]
// (see numeric/intake.h). Entries for which the file has no good record, and all
// of them if the file cannot be read, are set to 0.
TARNIC_EXPORT void ReadSignalFile_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                      std::int32_t* nrec, float* signal);

// Splits a table of more than one column into one series file per column, written
// beside the input, from its first nrec records (see numeric/demultiplex.h for the
// names and what each file holds). Writes nothing for a single-column table.
TARNIC_EXPORT void DemulplexTable_dll(const std::int16_t* pathCodes, std::int32_t* pathLen,
                                      std::int32_t* nrec);

#pragma once

// The binary interface between zelno and a use-case library: the two option
// records and the eight functions. The records are read by their offsets,
// which the asserts below pin down. Their strings and shared pointer take
// the form of the library's compiler (utilities/ulibrary_types.h): on
// Windows Microsoft's x64 layout, which a normal build of the vendor's DLLs
// reads; elsewhere the toolchain's own, with which the library is built.

#include <cstddef>
#include <cstdint>

#include "utilities/ulibrary_types.h"

struct wattscope_options {
    int32_t sampfreq;                       // Samples per second.
    VX_UTL::uLibraryString output;          // Output file.
    VX_UTL::uLibraryString format;          // "csv" or "gnuplot", as typed.
    VX_UTL::uLibraryString trace_mode;      // "ws" or "ws+", as typed.
    VX_UTL::uLibraryString config;          // Board configuration file of the session.
    VX_UTL::uLibraryString device;          // Device name of the session.
    int32_t maxoutsize;                     // Size limit of the output file.
    VX_UTL::uLibraryString range;           // "lo" or "hi", as typed.
    int32_t duration;                       // Milliseconds; 0 or less is no limit.
    uint8_t trig;                           // 1: wait for the hardware trigger.
    uint8_t saveall;                        // 1: keep every sample in the file.
    VX_UTL::uLibrarySharedPtr shared_slot;  // Empty on the way in.
    // Destroyed in reverse: shared_slot first, then range back to output.
};

struct prodtest_options {
    VX_UTL::uLibraryString input;   // Test description file.
    VX_UTL::uLibraryString config;  // Board configuration file of the session.
    VX_UTL::uLibraryString device;  // Device name of the session.
};

static_assert(sizeof(VX_UTL::uLibraryString) == 32, "the records assume a 32-byte string");
static_assert(offsetof(wattscope_options, sampfreq) == 0);
static_assert(offsetof(wattscope_options, output) == 8);
static_assert(offsetof(wattscope_options, format) == 40);
static_assert(offsetof(wattscope_options, trace_mode) == 72);
static_assert(offsetof(wattscope_options, config) == 104);
static_assert(offsetof(wattscope_options, device) == 136);
static_assert(offsetof(wattscope_options, maxoutsize) == 168);
static_assert(offsetof(wattscope_options, range) == 176);
static_assert(offsetof(wattscope_options, duration) == 208);
static_assert(offsetof(wattscope_options, trig) == 212);
static_assert(offsetof(wattscope_options, saveall) == 213);
static_assert(offsetof(wattscope_options, shared_slot) == 216);
static_assert(sizeof(wattscope_options) == 232);
static_assert(offsetof(prodtest_options, input) == 0);
static_assert(offsetof(prodtest_options, config) == 32);
static_assert(offsetof(prodtest_options, device) == 64);
static_assert(sizeof(prodtest_options) == 96);

// The library's exports, under these names or with a leading underscore.
// C linkage for the names; the records cross as the objects above.
extern "C" {
using wattscope_create_fn = int32_t (*)(const wattscope_options* options, void** handle);
using wattscope_run_fn = int32_t (*)(void* handle);
using wattscope_stop_fn = int32_t (*)(void* handle);
using wattscope_destroy_fn = int32_t (*)(void* handle);
using prodtest_create_fn = int32_t (*)(const prodtest_options* options, void** handle);
using prodtest_run_fn = int32_t (*)(void* handle);
using prodtest_stop_fn = int32_t (*)(void* handle);
using prodtest_destroy_fn = int32_t (*)(void* handle);
}

// Optional exports `wattscope_progress` and `prodtest_progress` (same name
// rule as above): a snapshot of a running use case for zelno's status line.
// zelno sets `size`; the library fills what it knows and sets the matching
// bits in `fields`. They are called from another thread than run, between
// create and destroy. A library without them still works: zelno then shows
// elapsed times only.
enum usecase_progress_field : uint32_t {
    progress_samples = 1u << 0,
    progress_mean_current = 1u << 1,
    progress_energy = 1u << 2,
};

struct usecase_progress {
    uint32_t size;          // sizeof(usecase_progress), set by zelno.
    uint32_t fields;        // usecase_progress_field bits, set by the library.
    uint64_t samples;       // Samples taken so far.
    double mean_current_a;  // Mean current so far, amperes.
    double energy_j;        // Energy so far, joules.
};
static_assert(sizeof(usecase_progress) == 32);

extern "C" {
using usecase_progress_fn = int32_t (*)(void* handle, usecase_progress* progress);
}

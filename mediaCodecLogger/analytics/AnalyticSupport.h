// SPDX-License-Identifier: Apache-2.0
// What the sources of the frame analytics share; private to them.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <string>

#include <utils/Vector.h>

#include <mediaCodecLogger/base/CheckedArithmetic.h>

namespace android {

// Bits of "mediaanalytic.debug". Where there is a second bit, the first counts for video trackers
// and the second for the others; a log bit without a second one counts for video alone.
enum DebugBits : int32_t {
    kDebugInput = 0x1,
    kDebugInputOther = 0x10000,
    kDebugOutput = 0x2,
    kDebugOutputOther = 0x20000,
    kDebugRender = 0x4,
    kDebugDequeue = 0x8,
    kDebugTrace = 0x10,
    kDebugQueue = 0x20,
    kDebugBytes = 0x40,
    kDebugBytesOther = 0x40000,
    kDumpInput = 0x80,
    kDumpInputOther = 0x80000,
    kDumpDecrypted = 0x100,
    kDumpDecryptedOther = 0x100000,
    kDumpOutput = 0x200,
    kDumpOutputOther = 0x200000,
    kDebugTimeline = 0x400,
    /** A mask of at least this value logs the buffer counts whenever they are told. */
    kDebugBufferCounts = 0x10000,
};

/** CLOCK_MONOTONIC in milliseconds. */
int64_t monotonicMs();

/** Media timestamps and callers' clocks are microseconds, truncated towards zero here. */
constexpr int64_t usToMs(int64_t us) {
    return us / 1000;
}

constexpr int64_t nsToMs(int64_t ns) {
    return ns / 1000000;
}

/** For "%lld": 64-bit integers are `long` here. */
constexpr long long ll(int64_t value) {
    return value;
}

/** Appends formatted text of any length; allocates only when `text` has to grow. */
void appendFormat(std::string& text, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Dumps: raw bytes without a header, one file for each thing dumped, kind of codec and thread.

/**
 * Opens "/data/tmp/dump<what>_<kind>_<pid>_<tid>.raw" afresh unless `file` is open already.
 *
 * @return whether it is open now; a failure is logged
 */
bool openDump(FILE*& file, const char* what, const char* kind);

/** Writes to an open dump. A short write is logged and closes it, so that the next one starts over.
 */
void writeDump(FILE*& file, const void* data, size_t size);

/**
 * Vector::editItemAt() without its look at whether another vector shares the storage: those of a
 * tracker are never copied.
 */
template <typename T>
T& editRecord(Vector<T>& records, size_t index) {
    return const_cast<T*>(records.array())[index];
}

/**
 * Removes one record. Vector::removeAt() may move what remains to new memory; taking records off
 * the end does not while there are few, so a steady flow of frames allocates nothing.
 */
template <typename T>
void removeRecord(Vector<T>& records, size_t index) {
    T* array = &editRecord(records, 0);
    std::copy(array + index + 1, array + records.size(), array + index);
    records.pop();
}

}  // namespace android

// SPDX-License-Identifier: Apache-2.0
// Parcel's storage and its raw reads and writes. Values of whole words and binder objects share one
// buffer; mObjects holds the sorted offsets of the live objects in it, each of which owns a strong
// reference.
#define LOG_TAG "Parcel"

#include <limits>
#include <memory>

#include <binder/Parcel.h>

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include <log/log.h>

#include "FlatObject.h"

namespace android {

static_assert(sizeof(Parcel) == 120, "Callers allocate Parcels with the size of the header");

namespace {

constexpr size_t kMinCapacity = 128;

size_t padded(size_t len) {
    return (len + 3) & ~size_t{3};
}

}  // namespace

Parcel::Parcel() {
    initState();
}

Parcel::~Parcel() {
    freeDataNoInit();
}

void Parcel::initState() {
    mError = NO_ERROR;
    mData = nullptr;
    mDataSize = 0;
    mDataCapacity = 0;
    mDataPos = 0;
    mObjects = nullptr;
    mObjectsSize = 0;
    mObjectsCapacity = 0;
    mNextObjectHint = 0;
    mObjectsSorted = true;
    mRequestHeaderPresent = false;
    mWorkSourceRequestHeaderPosition = 0;
    mFdsKnown = true;
    mHasFds = false;
    mAllowFds = false;
    mOwner = nullptr;
    mOwnerCookie = nullptr;
}

void Parcel::freeDataNoInit() {
    releaseObjects();
    free(mData);
    free(mObjects);
}

void Parcel::freeData() {
    freeDataNoInit();
    initState();
}

const uint8_t* Parcel::data() const {
    return mData;
}

size_t Parcel::dataSize() const {
    return std::max(mDataSize, mDataPos);
}

size_t Parcel::dataAvail() const {
    return mDataPos < mDataSize ? mDataSize - mDataPos : 0;
}

size_t Parcel::dataPosition() const {
    return mDataPos;
}

size_t Parcel::dataCapacity() const {
    return mDataCapacity;
}

size_t Parcel::objectsCount() const {
    return mObjectsSize;
}

status_t Parcel::errorCheck() const {
    return mError;
}

void Parcel::setError(status_t err) {
    mError = err;
}

void Parcel::setDataPosition(size_t pos) const {
    LOG_ALWAYS_FATAL_IF(pos > INT32_MAX, "pos too big: %zu", pos);
    mDataPos = pos;
}

status_t Parcel::setDataSize(size_t size) {
    if (const status_t err = continueWrite(size); err != NO_ERROR) return err;
    if (size > mDataSize) memset(mData + mDataSize, 0, size - mDataSize);
    mDataSize = size;
    return NO_ERROR;
}

status_t Parcel::setDataCapacity(size_t size) {
    return size > mDataCapacity ? continueWrite(size) : status_t{NO_ERROR};
}

status_t Parcel::setData(const uint8_t* buffer, size_t len) {
    freeData();
    if (const status_t err = setDataSize(len); err != NO_ERROR) return err;
    if (len > 0) memcpy(mData, buffer, len);
    return NO_ERROR;
}

int Parcel::compareData(const Parcel& other) {
    const size_t size = dataSize();
    if (size != other.dataSize()) return size < other.dataSize() ? -1 : 1;
    return size == 0 ? 0 : memcmp(data(), other.data(), size);
}

// Gives the buffer room for |desired| bytes; objects that would not lie inside are let go.
status_t Parcel::continueWrite(size_t desired) {
    if (desired > INT32_MAX) return BAD_VALUE;
    while (mObjectsSize > 0 && mObjects[mObjectsSize - 1] + sizeof(flat_binder_object) > desired) {
        releaseFlatObject(mData + mObjects[--mObjectsSize], this);
    }
    if (desired <= mDataCapacity) return NO_ERROR;
    auto* grown = static_cast<uint8_t*>(realloc(mData, desired));
    if (grown == nullptr) {
        mError = NO_MEMORY;
        return NO_MEMORY;
    }
    mData = grown;
    mDataCapacity = desired;
    return NO_ERROR;
}

// Makes room for |len| bytes at the position. An object that they overwrite is forgotten first, so
// that no stale address is ever taken for an object.
status_t Parcel::growData(size_t len) {
    if (mError != NO_ERROR) return mError;
    if (len > INT32_MAX || mDataPos + len > INT32_MAX) return BAD_VALUE;
    const size_t end = mDataPos + len;
    if (end > mDataCapacity) {
        const size_t wanted = std::max(end + end / 2, kMinCapacity);
        if (const status_t err = continueWrite(std::min<size_t>(wanted, INT32_MAX));
            err != NO_ERROR) {
            return err;
        }
    }
    if (mDataPos > mDataSize) memset(mData + mDataSize, 0, mDataPos - mDataSize);
    size_t kept = 0;
    for (size_t i = 0; i < mObjectsSize; i++) {
        const size_t at = mObjects[i];
        if (at < end && at + sizeof(flat_binder_object) > mDataPos) {
            releaseFlatObject(mData + at, this);
        } else {
            mObjects[kept++] = at;
        }
    }
    mObjectsSize = kept;
    return NO_ERROR;
}

status_t Parcel::finishWrite(size_t len) {
    mDataPos += len;
    mDataSize = std::max(mDataSize, mDataPos);
    return NO_ERROR;
}

void* Parcel::writeInplace(size_t len) {
    if (len > INT32_MAX) return nullptr;
    const size_t whole = padded(len);
    if (growData(whole) != NO_ERROR) return nullptr;
    uint8_t* const at = mData + mDataPos;
    if (whole > len) memset(at + len, 0, whole - len);
    finishWrite(whole);
    return at;
}

status_t Parcel::write(const void* data, size_t len) {
    if (len > INT32_MAX) return BAD_VALUE;
    void* const at = writeInplace(len);
    if (len == 0) return mError;  // an empty Parcel has no buffer that at could point into
    if (at == nullptr) return mError != NO_ERROR ? mError : status_t{NO_MEMORY};
    if (len > 0) memcpy(at, data, len);
    return NO_ERROR;
}

status_t Parcel::writeUnpadded(const void* data, size_t len) {
    if (const status_t err = growData(len); err != NO_ERROR) return err;
    if (len > 0) memcpy(mData + mDataPos, data, len);
    return finishWrite(len);
}

status_t Parcel::appendFrom(const Parcel* parcel, size_t offset, size_t len) {
    if (parcel->mError != NO_ERROR) return parcel->mError;
    if (len == 0) return NO_ERROR;
    if (offset > parcel->mDataSize || len > parcel->mDataSize - offset) return BAD_VALUE;

    const size_t start = mDataPos;
    if (const status_t err = writeUnpadded(parcel->mData + offset, len); err != NO_ERROR)
        return err;
    const size_t end = mDataPos;
    for (size_t i = 0; i < parcel->mObjectsSize; i++) {
        const size_t at = parcel->mObjects[i];
        if (at < offset || at + sizeof(flat_binder_object) > offset + len) continue;
        flat_binder_object flat;
        memcpy(&flat, parcel->mData + at, sizeof(flat));
        if (flat.type == kTypeFd) {
            flat.binder =
                    static_cast<uint32_t>(fcntl(static_cast<int>(flat.binder), F_DUPFD_CLOEXEC, 0));
            flat.cookie = 1;  // the copy is this Parcel's
        }
        mDataPos = start + (at - offset);
        if (const status_t err = writeObject(flat, true); err != NO_ERROR) return err;
    }
    mDataPos = end;
    return NO_ERROR;
}

// Refuses to hand out the bytes from the position up to |end| where a live object lies in them: its
// address means nothing to the reader.
status_t Parcel::validateReadData(size_t end) const {
    const binder_size_t* const last = mObjects + mObjectsSize;
    const binder_size_t first =
            mDataPos >= sizeof(flat_binder_object) ? mDataPos - sizeof(flat_binder_object) + 1 : 0;
    const binder_size_t* const found =
            std::lower_bound<const binder_size_t*>(mObjects, last, first);
    if (found == last || *found >= end) return NO_ERROR;
    ALOGE("Attempt to read %zu bytes at %zu, where object %llu lies", end - mDataPos, mDataPos,
          *found);
    return PERMISSION_DENIED;
}

const void* Parcel::readInplace(size_t len) const {
    if (len > INT32_MAX || mDataPos > mDataSize || padded(len) > dataAvail()) return nullptr;
    const size_t start = mDataPos;
    const status_t err = validateReadData(start + padded(len));
    mDataPos += padded(len);
    return err == NO_ERROR ? mData + start : nullptr;
}

status_t Parcel::read(void* outData, size_t len) const {
    if (len > INT32_MAX) return BAD_VALUE;
    if (mDataPos > mDataSize || padded(len) > dataAvail()) return NOT_ENOUGH_DATA;
    if (mData == nullptr) return NO_ERROR;  // nothing was written and nothing is asked for
    const void* const at = readInplace(len);
    if (at == nullptr) return PERMISSION_DENIED;
    if (len > 0) memcpy(outData, at, len);
    return NO_ERROR;
}

template <class T>
status_t Parcel::writeAligned(T val) {
    static_assert(sizeof(T) % 4 == 0);
    if (const status_t err = growData(sizeof(T)); err != NO_ERROR) return err;
    memcpy(mData + mDataPos, &val, sizeof(T));
    return finishWrite(sizeof(T));
}

template <class T>
status_t Parcel::readAligned(T* pArg) const {
    static_assert(sizeof(T) % 4 == 0);
    if (sizeof(T) > dataAvail()) return NOT_ENOUGH_DATA;
    const uint8_t* const at = mData + mDataPos;
    const status_t err = validateReadData(mDataPos + sizeof(T));
    mDataPos += sizeof(T);
    if (err != NO_ERROR) return err;
    memcpy(pArg, at, sizeof(T));
    return NO_ERROR;
}

template <class T>
T Parcel::readAligned() const {
    T value;
    return readAligned(&value) == NO_ERROR ? value : T{};
}

status_t Parcel::writeInt32(int32_t val) {
    return writeAligned(val);
}

status_t Parcel::writeUint32(uint32_t val) {
    return writeAligned(val);
}

status_t Parcel::writeInt64(int64_t val) {
    return writeAligned(val);
}

status_t Parcel::writeUint64(uint64_t val) {
    return writeAligned(val);
}

status_t Parcel::writeFloat(float val) {
    return writeAligned(val);
}

status_t Parcel::writeDouble(double val) {
    return writeAligned(val);
}

status_t Parcel::writeBool(bool val) {
    return writeInt32(val ? 1 : 0);
}

status_t Parcel::writeChar(char16_t val) {
    return writeInt32(val);
}

status_t Parcel::writeByte(int8_t val) {
    return writeInt32(val);
}

status_t Parcel::readInt32(int32_t* pArg) const {
    return readAligned(pArg);
}

int32_t Parcel::readInt32() const {
    return readAligned<int32_t>();
}

status_t Parcel::readUint32(uint32_t* pArg) const {
    return readAligned(pArg);
}

uint32_t Parcel::readUint32() const {
    return readAligned<uint32_t>();
}

status_t Parcel::readInt64(int64_t* pArg) const {
    return readAligned(pArg);
}

int64_t Parcel::readInt64() const {
    return readAligned<int64_t>();
}

status_t Parcel::readUint64(uint64_t* pArg) const {
    return readAligned(pArg);
}

uint64_t Parcel::readUint64() const {
    return readAligned<uint64_t>();
}

status_t Parcel::readFloat(float* pArg) const {
    return readAligned(pArg);
}

float Parcel::readFloat() const {
    return readAligned<float>();
}

status_t Parcel::readDouble(double* pArg) const {
    return readAligned(pArg);
}

double Parcel::readDouble() const {
    return readAligned<double>();
}

status_t Parcel::readBool(bool* pArg) const {
    int32_t word = 0;
    const status_t err = readInt32(&word);
    *pArg = word != 0;
    return err;
}

bool Parcel::readBool() const {
    return readInt32() != 0;
}

status_t Parcel::readChar(char16_t* pArg) const {
    int32_t word = 0;
    const status_t err = readInt32(&word);
    *pArg = static_cast<char16_t>(word);
    return err;
}

char16_t Parcel::readChar() const {
    return static_cast<char16_t>(readInt32());
}

status_t Parcel::readByte(int8_t* pArg) const {
    int32_t word = 0;
    const status_t err = readInt32(&word);
    *pArg = static_cast<int8_t>(word);
    return err;
}

int8_t Parcel::readByte() const {
    return static_cast<int8_t>(readInt32());
}

}  // namespace android

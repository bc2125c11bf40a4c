// SPDX-License-Identifier: Apache-2.0
// Vectors in a Parcel: a count, then each element as it would be written alone. Parcelables: a word
// that says whether there is one, then whatever it writes.
#include <limits>
#include <memory>

#include <binder/Parcel.h>

#include <string.h>

namespace android {

namespace {

// More elements than any transaction has room for. A larger count is a lie of the sender's, and no
// memory is reserved for it.
constexpr int32_t kMaxElements = 1 << 20;

// NOT_ENOUGH_DATA if the count at the position of |parcel| promises more than kMaxElements.
status_t checkCount(const Parcel& parcel) {
    const size_t start = parcel.dataPosition();
    int32_t count = 0;
    parcel.readInt32(&count);
    if (count > kMaxElements && static_cast<size_t>(count) > parcel.dataAvail()) {
        return NOT_ENOUGH_DATA;
    }
    parcel.setDataPosition(start);
    return NO_ERROR;
}

}  // namespace

// The four forms of a vector of |type|: read and written, plain and nullable.
#define PARCEL_VECTOR(name, type, writeOne, readName, readOne)                    \
    status_t Parcel::write##name(const std::vector<type>& val) {                  \
        return writeTypedVector(val, &Parcel::writeOne);                          \
    }                                                                             \
    status_t Parcel::write##name(const std::unique_ptr<std::vector<type>>& val) { \
        return writeNullableTypedVector(val, &Parcel::writeOne);                  \
    }                                                                             \
    status_t Parcel::readName(std::vector<type>* val) const {                     \
        if (const status_t err = checkCount(*this); err != NO_ERROR) return err;  \
        return readTypedVector(val, &Parcel::readOne);                            \
    }                                                                             \
    status_t Parcel::readName(std::unique_ptr<std::vector<type>>* val) const {    \
        if (const status_t err = checkCount(*this); err != NO_ERROR) return err;  \
        return readNullableTypedVector(val, &Parcel::readOne);                    \
    }

PARCEL_VECTOR(Int32Vector, int32_t, writeInt32, readInt32Vector, readInt32)
PARCEL_VECTOR(Int64Vector, int64_t, writeInt64, readInt64Vector, readInt64)
PARCEL_VECTOR(Uint64Vector, uint64_t, writeUint64, readUint64Vector, readUint64)
PARCEL_VECTOR(FloatVector, float, writeFloat, readFloatVector, readFloat)
PARCEL_VECTOR(DoubleVector, double, writeDouble, readDoubleVector, readDouble)
PARCEL_VECTOR(StrongBinderVector, sp<IBinder>, writeStrongBinder, readStrongBinderVector,
              readStrongBinder)

#undef PARCEL_VECTOR

status_t Parcel::writeString16Vector(const std::vector<String16>& val) {
    return writeTypedVector(val, &Parcel::writeString16);
}

status_t Parcel::writeString16Vector(
        const std::unique_ptr<std::vector<std::unique_ptr<String16>>>& val) {
    return writeNullableTypedVector(val, &Parcel::writeString16);
}

status_t Parcel::readString16Vector(std::vector<String16>* val) const {
    if (const status_t err = checkCount(*this); err != NO_ERROR) return err;
    return readTypedVector(val, &Parcel::readString16);
}

status_t Parcel::readString16Vector(
        std::unique_ptr<std::vector<std::unique_ptr<String16>>>* val) const {
    if (const status_t err = checkCount(*this); err != NO_ERROR) return err;
    return readNullableTypedVector(val, &Parcel::readString16);
}

status_t Parcel::writeUtf8VectorAsUtf16Vector(const std::vector<std::string>& val) {
    return writeTypedVector(val, &Parcel::writeUtf8AsUtf16);
}

status_t Parcel::writeUtf8VectorAsUtf16Vector(
        const std::unique_ptr<std::vector<std::unique_ptr<std::string>>>& val) {
    return writeNullableTypedVector(val, &Parcel::writeUtf8AsUtf16);
}

status_t Parcel::readUtf8VectorFromUtf16Vector(std::vector<std::string>* val) const {
    if (const status_t err = checkCount(*this); err != NO_ERROR) return err;
    return readTypedVector(val, &Parcel::readUtf8FromUtf16);
}

status_t Parcel::readUtf8VectorFromUtf16Vector(
        std::unique_ptr<std::vector<std::unique_ptr<std::string>>>* val) const {
    if (const status_t err = checkCount(*this); err != NO_ERROR) return err;
    return readNullableTypedVector(val, &Parcel::readUtf8FromUtf16);
}

status_t Parcel::writeParcelable(const Parcelable& parcelable) {
    if (const status_t err = writeInt32(1); err != NO_ERROR) return err;
    return parcelable.writeToParcel(this);
}

status_t Parcel::writeRawNullableParcelable(const Parcelable* parcelable) {
    return parcelable != nullptr ? writeParcelable(*parcelable) : writeInt32(0);
}

status_t Parcel::readParcelable(Parcelable* parcelable) const {
    int32_t present = 0;
    if (const status_t err = readInt32(&present); err != NO_ERROR) return err;
    return present != 0 ? parcelable->readFromParcel(this) : status_t{UNEXPECTED_NULL};
}

}  // namespace android

// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/Parcel.h>
#include <binder/Status.h>

#include <string.h>

#include <string>

namespace android {

namespace {

struct Name {
    int32_t code;
    const char* text;
};

constexpr Name kStatusNames[] = {
        {OK, "OK"},
        {UNKNOWN_ERROR, "UNKNOWN_ERROR"},
        {NO_MEMORY, "NO_MEMORY"},
        {INVALID_OPERATION, "INVALID_OPERATION"},
        {BAD_VALUE, "BAD_VALUE"},
        {BAD_TYPE, "BAD_TYPE"},
        {NAME_NOT_FOUND, "NAME_NOT_FOUND"},
        {PERMISSION_DENIED, "PERMISSION_DENIED"},
        {NO_INIT, "NO_INIT"},
        {ALREADY_EXISTS, "ALREADY_EXISTS"},
        {DEAD_OBJECT, "DEAD_OBJECT"},
        {FAILED_TRANSACTION, "FAILED_TRANSACTION"},
        {BAD_INDEX, "BAD_INDEX"},
        {NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
        {WOULD_BLOCK, "WOULD_BLOCK"},
        {TIMED_OUT, "TIMED_OUT"},
        {UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
        {FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
        {UNEXPECTED_NULL, "UNEXPECTED_NULL"},
};

constexpr Name kExceptionNames[] = {
        {binder::Status::EX_NONE, "EX_NONE"},
        {binder::Status::EX_SECURITY, "EX_SECURITY"},
        {binder::Status::EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"},
        {binder::Status::EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"},
        {binder::Status::EX_NULL_POINTER, "EX_NULL_POINTER"},
        {binder::Status::EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"},
        {binder::Status::EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"},
        {binder::Status::EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"},
        {binder::Status::EX_SERVICE_SPECIFIC, "EX_SERVICE_SPECIFIC"},
        {binder::Status::EX_PARCELABLE, "EX_PARCELABLE"},
        {binder::Status::EX_HAS_REPLY_HEADER, "EX_HAS_REPLY_HEADER"},
        {binder::Status::EX_TRANSACTION_FAILED, "EX_TRANSACTION_FAILED"},
};

template <size_t N>
const char* nameOf(const Name (&names)[N], int32_t code) {
    for (const Name& name : names) {
        if (name.code == code) return name.text;
    }
    return nullptr;
}

}  // namespace

std::string statusToString(status_t status) {
    if (const char* const name = nameOf(kStatusNames, status); name != nullptr) return name;
    const unsigned error = -static_cast<unsigned>(status);
    return std::to_string(status) + " (" + strerror(static_cast<int>(error)) + ")";
}

namespace binder {

namespace {

// Skips a block that starts with its own size; |sizeCounted| says whether the size counts itself.
status_t skipBlock(const Parcel& parcel, bool sizeCounted) {
    const size_t start = parcel.dataPosition();
    const size_t startAvail = parcel.dataAvail();
    int32_t size = 0;
    if (const status_t err = parcel.readInt32(&size); err != OK) return err;
    const size_t origin = sizeCounted ? start : parcel.dataPosition();
    const size_t avail = sizeCounted ? startAvail : parcel.dataAvail();
    if (size < 0 || static_cast<size_t>(size) > avail) return UNKNOWN_ERROR;
    parcel.setDataPosition(origin + static_cast<size_t>(size));
    return OK;
}

}  // namespace

Status::Status(int32_t exceptionCode, int32_t errorCode)
    : mException(exceptionCode), mErrorCode(errorCode) {}

Status::Status(int32_t exceptionCode, int32_t errorCode, const String8& message)
    : mException(exceptionCode), mErrorCode(errorCode), mMessage(message) {}

Status Status::ok() {
    return Status();
}

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return fromExceptionCode(exceptionCode, String8());
}

Status Status::fromExceptionCode(int32_t exceptionCode, const String8& message) {
    Status status;
    status.setException(exceptionCode, message);
    return status;
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    return fromExceptionCode(exceptionCode, String8(message));
}

Status Status::fromServiceSpecificError(int32_t serviceSpecificErrorCode) {
    return Status(EX_SERVICE_SPECIFIC, serviceSpecificErrorCode);
}

Status Status::fromServiceSpecificError(int32_t serviceSpecificErrorCode, const String8& message) {
    return Status(EX_SERVICE_SPECIFIC, serviceSpecificErrorCode, message);
}

Status Status::fromServiceSpecificError(int32_t serviceSpecificErrorCode, const char* message) {
    return fromServiceSpecificError(serviceSpecificErrorCode, String8(message));
}

Status Status::fromStatusT(status_t error) {
    Status status;
    status.setFromStatusT(error);
    return status;
}

std::string Status::exceptionToString(status_t exceptionCode) {
    const char* const name = nameOf(kExceptionNames, exceptionCode);
    return name != nullptr ? name : std::to_string(exceptionCode);
}

void Status::setException(int32_t ex, const String8& message) {
    mException = ex;
    mErrorCode = ex == EX_TRANSACTION_FAILED ? FAILED_TRANSACTION : NO_ERROR;
    mMessage = message;
}

void Status::setServiceSpecificError(int32_t errorCode, const String8& message) {
    *this = Status(EX_SERVICE_SPECIFIC, errorCode, message);
}

void Status::setFromStatusT(status_t status) {
    *this = Status(status == NO_ERROR ? EX_NONE : EX_TRANSACTION_FAILED, status);
}

status_t Status::readFromParcel(const Parcel& parcel) {
    const auto fail = [this](status_t err) {
        setFromStatusT(err);
        return err;
    };
    int32_t code;
    if (const status_t err = parcel.readInt32(&code); err != OK) return fail(err);
    if (code == EX_HAS_REPLY_HEADER) {
        if (const status_t err = skipBlock(parcel, true); err != OK) return fail(err);
        code = EX_NONE;
    }
    if (code == EX_NONE) {
        *this = Status();
        return OK;
    }

    String16 message;
    if (const status_t err = parcel.readString16(&message); err != OK) return fail(err);
    // The remote's stack trace, which is only of use to Java callers.
    if (const status_t err = skipBlock(parcel, false); err != OK) return fail(err);
    int32_t errorCode = 0;
    if (code == EX_SERVICE_SPECIFIC) {
        if (const status_t err = parcel.readInt32(&errorCode); err != OK) return fail(err);
    } else if (code == EX_PARCELABLE) {
        if (const status_t err = skipBlock(parcel, true); err != OK) return fail(err);
    }
    *this = Status(code, errorCode, String8(message));
    return OK;
}

status_t Status::writeToParcel(Parcel* parcel) const {
    if (mException == EX_TRANSACTION_FAILED) return mErrorCode;
    if (const status_t err = parcel->writeInt32(mException); err != OK) return err;
    if (mException == EX_NONE) return OK;
    if (const status_t err = parcel->writeString16(String16(mMessage)); err != OK) return err;
    if (const status_t err = parcel->writeInt32(0); err != OK) return err;  // no stack trace
    if (mException == EX_SERVICE_SPECIFIC) return parcel->writeInt32(mErrorCode);
    if (mException == EX_PARCELABLE) return parcel->writeInt32(0);
    return OK;
}

String8 Status::toString8() const {
    if (mException == EX_NONE) return String8("No error");
    String8 text;
    text.appendFormat("Status(%d, %s): '", mException, exceptionToString(mException).c_str());
    if (mException == EX_SERVICE_SPECIFIC) {
        text.appendFormat("%d: ", mErrorCode);
    } else if (mException == EX_TRANSACTION_FAILED) {
        text.appendFormat("%s: ", statusToString(mErrorCode).c_str());
    }
    text.append(mMessage);
    text.append("'");
    return text;
}

std::stringstream& operator<<(std::stringstream& stream, const Status& status) {
    stream << status.toString8().string();
    return stream;
}

}  // namespace binder
}  // namespace android

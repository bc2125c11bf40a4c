// SPDX-License-Identifier: Apache-2.0
// Reads of every type, in any order and from any position, out of any bytes with objects among
// them.
#include "Fuzz.h"

#include <limits>
#include <memory>
#include <vector>

#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <binder/Status.h>
#include <tests/support/LogCapture.h>
#include <utils/String16.h>
#include <utils/String8.h>

using namespace android;

namespace {

using fuzz::Bytes;
using Operation = void (*)(const Parcel& parcel, Bytes& in);

template <typename T, status_t (Parcel::*read)(T*) const>
void readInto(const Parcel& parcel, Bytes&) {
    T value{};
    (parcel.*read)(&value);
}

template <typename T, T (Parcel::*read)() const>
void readPlain(const Parcel& parcel, Bytes&) {
    (parcel.*read)();
}

#define READ_INTO(type, name) readInto<type, &Parcel::name>
#define READ_PLAIN(type, name) readPlain<type, &Parcel::name>

constexpr Operation kOperations[] = {
        READ_INTO(int32_t, readInt32),
        READ_INTO(uint32_t, readUint32),
        READ_INTO(int64_t, readInt64),
        READ_INTO(uint64_t, readUint64),
        READ_INTO(float, readFloat),
        READ_INTO(double, readDouble),
        READ_INTO(bool, readBool),
        READ_INTO(char16_t, readChar),
        READ_INTO(int8_t, readByte),
        READ_INTO(String8, readString8),
        READ_INTO(String16, readString16),
        READ_INTO(std::string, readUtf8FromUtf16),
        READ_INTO(std::unique_ptr<String16>, readString16),
        READ_INTO(std::unique_ptr<std::string>, readUtf8FromUtf16),
        READ_INTO(sp<IBinder>, readStrongBinder),
        READ_INTO(sp<IBinder>, readNullableStrongBinder),
        READ_INTO(std::vector<int32_t>, readInt32Vector),
        READ_INTO(std::vector<int64_t>, readInt64Vector),
        READ_INTO(std::vector<uint64_t>, readUint64Vector),
        READ_INTO(std::vector<float>, readFloatVector),
        READ_INTO(std::vector<double>, readDoubleVector),
        READ_INTO(std::vector<String16>, readString16Vector),
        READ_INTO(std::vector<std::string>, readUtf8VectorFromUtf16Vector),
        READ_INTO(std::vector<sp<IBinder>>, readStrongBinderVector),
        READ_INTO(std::unique_ptr<std::vector<int64_t>>, readInt64Vector),
        READ_INTO(std::unique_ptr<std::vector<std::unique_ptr<std::string>>>,
                  readUtf8VectorFromUtf16Vector),
        READ_PLAIN(int32_t, readInt32),
        READ_PLAIN(int64_t, readInt64),
        READ_PLAIN(bool, readBool),
        READ_PLAIN(const char*, readCString),
        READ_PLAIN(String8, readString8),
        READ_PLAIN(String16, readString16),
        READ_PLAIN(sp<IBinder>, readStrongBinder),
        READ_PLAIN(int32_t, readExceptionCode),
        [](const Parcel& parcel, Bytes&) {
            binder::Status status;
            status.readFromParcel(parcel);
            (void)status.toString8();
        },
        [](const Parcel& parcel, Bytes&) {
            parcel.enforceInterface(String16("android.media.IMediaCodecLoggerService"));
        },
        [](const Parcel& parcel, Bytes& in) {
            // What is handed out lies inside and is readable.
            const size_t size = in.number<uint16_t>();
            const auto* at = static_cast<const uint8_t*>(parcel.readInplace(size));
            if (at == nullptr) return;
            FUZZ_CHECK(at >= parcel.data() && at + size <= parcel.data() + parcel.dataSize());
            std::vector<uint8_t>(at, at + size);
        },
        [](const Parcel& parcel, Bytes& in) {
            uint8_t buffer[256];
            parcel.read(buffer, in.byte());
        },
        [](const Parcel& parcel, Bytes& in) {
            // dataPosition() gives no others.
            parcel.setDataPosition(in.number<uint16_t>() & ~3u);
        },
        [](const Parcel& parcel, Bytes& in) {
            Parcel copy;
            const size_t offset = in.number<uint16_t>();
            copy.appendFrom(&parcel, offset, in.number<uint16_t>());
            copy.setDataPosition(0);
            copy.readStrongBinder();
        },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static test::LogCapture& log = *new test::LogCapture;
    Bytes in(data, size);
    const sp<BBinder> object = new BBinder;
    {
        Parcel parcel;
        for (int pieces = in.byte() % 4; pieces >= 0; --pieces) {
            const std::string_view bytes = in.bytes(in.number<uint16_t>() % 2048);
            parcel.write(bytes.data(), bytes.size());
            if (in.flag()) parcel.writeStrongBinder(object);
        }
        const size_t written = parcel.dataSize();
        parcel.setDataPosition(0);
        while (!in.atEnd()) {
            kOperations[in.byte() % std::size(kOperations)](parcel, in);
            FUZZ_CHECK(parcel.dataAvail() <= written);
        }
    }
    FUZZ_CHECK(object->getStrongCount() == 1, "a Parcel keeps or loses a reference\n");
    log.take();
    return 0;
}

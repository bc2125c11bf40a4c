// SPDX-License-Identifier: Apache-2.0
#include "tests/hostPlatform/libbinder/ParcelHex.h"

#include <binder/Status.h>

#include <gtest/gtest.h>

namespace android::test {
namespace {

using binder::Status;

struct Case {
    const char* name;
    Status status;
    const char* hex;
    const char* text;
    status_t writeResult = OK;
    status_t transactionError = OK;
};

const Case kCases[] = {
        {"ok", Status::ok(), "00000000", "No error"},
        {"without text", Status::fromExceptionCode(Status::EX_NULL_POINTER),
         "fcffffff 00000000 00000000 00000000", "Status(-4, EX_NULL_POINTER): ''"},
        {"with text", Status::fromExceptionCode(Status::EX_SECURITY, "ab"),
         "ffffffff 02000000 61006200 00000000 00000000", "Status(-1, EX_SECURITY): 'ab'"},
        {"service specific", Status::fromServiceSpecificError(7, "m"),
         "f8ffffff 01000000 6d000000 00000000 07000000", "Status(-8, EX_SERVICE_SPECIFIC): '7: m'"},
        {"parcelable", Status::fromExceptionCode(Status::EX_PARCELABLE),
         "f7ffffff 00000000 00000000 00000000 00000000", "Status(-9, EX_PARCELABLE): ''"},
        {"transaction", Status::fromStatusT(DEAD_OBJECT), "",
         "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '", DEAD_OBJECT, DEAD_OBJECT},
        {"transaction by code", Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED), "",
         "Status(-129, EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '", FAILED_TRANSACTION,
         FAILED_TRANSACTION},
};

TEST(StatusTest, isWrittenReadAndPrintedAsOnAndroid11) {
    for (const Case& c : kCases) {
        Parcel parcel;
        EXPECT_EQ(c.writeResult, c.status.writeToParcel(&parcel)) << c.name;
        EXPECT_EQ(c.hex, hexOf(parcel)) << c.name;
        EXPECT_STREQ(c.text, c.status.toString8().string()) << c.name;
        EXPECT_EQ(c.transactionError, c.status.transactionError()) << c.name;
        if (c.writeResult != OK) continue;
        parcel.setDataPosition(0);
        Status read = Status::fromStatusT(BAD_VALUE);
        EXPECT_EQ(OK, read.readFromParcel(parcel)) << c.name;
        EXPECT_EQ(c.status.exceptionCode(), read.exceptionCode()) << c.name;
        EXPECT_EQ(c.status.exceptionMessage(), read.exceptionMessage()) << c.name;
        EXPECT_EQ(c.status.serviceSpecificErrorCode(), read.serviceSpecificErrorCode()) << c.name;
        // The size of a parcelable counts itself, so that 0 leads back to where it stands.
        const size_t rest = c.status.exceptionCode() == Status::EX_PARCELABLE ? 4 : 0;
        EXPECT_EQ(rest, parcel.dataAvail()) << c.name;
    }
}

}  // namespace
}  // namespace android::test

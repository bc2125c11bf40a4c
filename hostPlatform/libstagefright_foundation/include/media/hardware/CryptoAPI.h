// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android {

/** The types that describe an encrypted buffer. Decryption itself has no place here. */
struct CryptoPlugin {
    enum Mode {
        kMode_Unencrypted = 0,
        kMode_AES_CTR = 1,
        kMode_AES_WV = 2,
        kMode_AES_CBC = 3,
    };

    struct SubSample {
        uint32_t mNumBytesOfClearData;
        uint32_t mNumBytesOfEncryptedData;
    };

    struct Pattern {
        uint32_t mEncryptBlocks;
        uint32_t mSkipBlocks;
    };
};

}  // namespace android

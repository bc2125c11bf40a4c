// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::logger {

/** What vendors' components add to output formats: the key of OMX ones and that of Codec2 ones. */
struct VendorKey {
    const char* omx;
    const char* codec2;
};

/** The OMX key is also the property that holds the type for those that do not report it. */
inline constexpr VendorKey kHdrTypeKey = {"vendor.vdecomx.hdr-type", "vendor.mtk-codec2.hdr-type"};
inline constexpr VendorKey kScanTypeKey = {"vendor.vdecomx.scan-type",
                                           "vendor.mtk-codec2.scan-type"};
inline constexpr VendorKey kBitDepthKey = {"vendor.vdecomx.bitdepth",
                                           "vendor.mtk-codec2.color-depth"};

}  // namespace android::logger

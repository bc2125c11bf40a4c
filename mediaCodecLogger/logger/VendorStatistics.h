// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <media/stagefright/foundation/AString.h>

namespace android::logger {

/** What a codec's component tells of itself: keys, each followed by one separator and a number. */
class VendorStatistics {
  public:
    explicit VendorStatistics(const AString& text) : mText(text) {}

    // 0 where the component says nothing.
    uint32_t nonFatalErrors() const { return count("CodecNonFatalErrorCount"); }
    uint32_t droppedInTunnel() const { return count("TunnelFrameDropCount"); }
    uint32_t shownByDisplay() const { return count("HWCRenderFrameCount"); }
    uint32_t longestDropRun() const { return count("MaxConsecutiveFramesDropped"); }

    /** The decimal value that follows `key` and one separator; 0 when there is none. */
    long valueOf(const char* key) const;

  private:
    /** The counters have 32 bits; what the vendor sends beyond that is cut off. */
    uint32_t count(const char* key) const { return static_cast<uint32_t>(valueOf(key)); }

    const AString& mText;
};

}  // namespace android::logger

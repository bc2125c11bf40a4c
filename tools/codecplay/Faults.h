// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <atomic>
#include <vector>

#include "Options.h"

namespace android::codecplay {

/** The faults that were asked for, of the one stream that they are meant for. Thread-safe. */
class Faults {
  public:
    /** @param stop set by somebody else to end all that holds frames up */
    Faults(std::vector<Delay> delays, std::vector<FrameRange> drops, const std::atomic<bool>& stop);

    /** How long the fault holds the frame up. */
    int64_t delayNs(Fault fault, int64_t frame) const;
    /** Returns that much later. */
    void hold(Fault fault, int64_t frame) const;
    /** The application is to drop the frame. */
    bool drops(int64_t frame) const;

  private:
    const std::vector<Delay> mDelays;
    const std::vector<FrameRange> mDrops;
    const std::atomic<bool>& mStop;
};

}  // namespace android::codecplay

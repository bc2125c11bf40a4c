// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>

#include "Options.h"
#include "OutputFile.h"

namespace android::codecplay {

/**
 * From now on each call to the library is written down, with the clock, as an event of a story:
 * tests/stories/README.md has the form. The file is open already.
 */
void startStory(OutputFile* file, const Options& options);

/** Called right before the library is. Does nothing without a story. Thread-safe. */
void recordEvent(const CodecBase* codec, const char* format, ...)
        __attribute__((format(printf, 2, 3)));
/** The same of a format change. */
void recordFormat(const CodecBase* codec, const sp<AMessage>& format);

}  // namespace android::codecplay

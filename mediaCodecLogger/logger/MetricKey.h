// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

namespace android::logger {

/** A key of the system log. Longer ones are cut at 149 characters. */
class MetricKey {
  public:
    __attribute__((format(printf, 2, 3))) explicit MetricKey(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(mText, kMaxLength + 1, format, arguments);
        va_end(arguments);
    }
    const char* c_str() const { return mText; }

  private:
    static constexpr size_t kMaxLength = 149;
    char mText[kMaxLength + 1];
};

}  // namespace android::logger

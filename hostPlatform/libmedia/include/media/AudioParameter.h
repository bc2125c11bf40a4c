// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/String8.h>

namespace android {

/**
 * Parsed "key=value;key=value" text. Nothing is trimmed, case counts, a piece without "=" has an
 * empty value, the last of several values of a key stays.
 */
class AudioParameter {
  public:
    AudioParameter() = default;
    AudioParameter(const String8& keyValuePairs);

    /** BAD_VALUE, value untouched, when the key is absent. */
    status_t get(const String8& key, String8& value) const;

    /**
     * The decimal number that the value starts with. The result is 0 on failure: BAD_VALUE when
     * the key is absent, INVALID_OPERATION when its value does not start with a number.
     */
    status_t getInt(const String8& key, int& value) const;

    size_t size() const { return mParameters.size(); }

  private:
    KeyedVector<String8, String8> mParameters;
};

}  // namespace android

// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <string.h>

#include <media/AudioParameter.h>

namespace android {

AudioParameter::AudioParameter(const String8& keyValuePairs) {
    const char* piece = keyValuePairs.string();
    while (*piece != '\0') {
        const size_t length = strcspn(piece, ";");
        if (length > 0) {
            const size_t keyLength = strcspn(piece, "=;");
            const char* const end = piece + length;
            const char* const value = keyLength < length ? piece + keyLength + 1 : end;
            mParameters.add(String8(piece, keyLength), String8(value, end - value));
        }
        piece += length;
        if (*piece == ';') ++piece;
    }
}

status_t AudioParameter::get(const String8& key, String8& value) const {
    const ssize_t index = mParameters.indexOfKey(key);
    if (index < 0) return BAD_VALUE;
    value = mParameters.valueAt(index);
    return NO_ERROR;
}

status_t AudioParameter::getInt(const String8& key, int& value) const {
    value = 0;
    String8 text;
    const status_t status = get(key, text);
    if (status != NO_ERROR) return status;
    int number = 0;
    if (sscanf(text.string(), "%d", &number) != 1) return INVALID_OPERATION;
    value = number;
    return NO_ERROR;
}

}  // namespace android

// SPDX-License-Identifier: Apache-2.0
#include <cutils/properties.h>
#include <errno.h>
#include <inttypes.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include <hostplatform/Properties.h>

namespace {

struct Store {
    std::mutex lock;
    std::map<std::string, std::string, std::less<>> values;
    bool refusesChanges = false;
};

// Never destroyed: threads may still read properties while the process exits.
Store& store() {
    static Store& instance = *new Store;
    return instance;
}

std::string find(const char* key) {
    if (key == nullptr) return "";
    std::lock_guard<std::mutex> guard(store().lock);
    const auto it = store().values.find(std::string_view(key));
    return it == store().values.end() ? "" : it->second;
}

int copyOut(const char* text, size_t size, char* value) {
    const size_t length = std::min<size_t>(size, PROPERTY_VALUE_MAX - 1);
    memcpy(value, text, length);
    value[length] = '\0';
    return static_cast<int>(length);
}

intmax_t getInteger(const char* key, intmax_t lowest, intmax_t highest, intmax_t fallback) {
    const std::string text = find(key);
    if (text.empty()) return fallback;
    const int callersErrno = errno;
    errno = 0;
    char* end = nullptr;
    const intmax_t value = strtoimax(text.c_str(), &end, 0);
    const bool outOfRange = errno == ERANGE || value < lowest || value > highest;
    errno = callersErrno;
    return end == text.c_str() || outOfRange ? fallback : value;
}

}  // namespace

extern "C" {

int property_get(const char* key, char* value, const char* default_value) {
    const std::string text = find(key);
    if (!text.empty()) return copyOut(text.data(), text.size(), value);
    if (default_value == nullptr) default_value = "";
    return copyOut(default_value, strlen(default_value), value);
}

int8_t property_get_bool(const char* key, int8_t default_value) {
    const std::string text = find(key);
    const auto isText = [&text](const char* candidate) { return text == candidate; };
    static constexpr const char* kTrue[] = {"1", "y", "yes", "on", "true"};
    static constexpr const char* kFalse[] = {"0", "n", "no", "off", "false"};
    if (std::any_of(std::begin(kTrue), std::end(kTrue), isText)) return 1;
    if (std::any_of(std::begin(kFalse), std::end(kFalse), isText)) return 0;
    return default_value;
}

int64_t property_get_int64(const char* key, int64_t default_value) {
    return getInteger(key, INT64_MIN, INT64_MAX, default_value);
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    return static_cast<int32_t>(getInteger(key, INT32_MIN, INT32_MAX, default_value));
}

int property_set(const char* key, const char* value) {
    if (key == nullptr || *key == '\0') return -1;
    if (value == nullptr) value = "";
    const bool mayBeLong = strncmp(key, "ro.", 3) == 0;
    if (!mayBeLong && strlen(value) >= PROPERTY_VALUE_MAX) return -1;
    std::lock_guard<std::mutex> guard(store().lock);
    if (store().refusesChanges) return -1;
    store().values[key] = value;
    return 0;
}

int property_list(void (*propfn)(const char* key, const char* value, void* cookie), void* cookie) {
    // A copy, because the callback may set properties itself.
    std::unique_lock<std::mutex> guard(store().lock);
    const auto values = store().values;
    guard.unlock();
    for (const auto& [key, value] : values) propfn(key.c_str(), value.c_str(), cookie);
    return 0;
}

}  // extern "C"

namespace android::hostplatform {

void clearProperties() {
    std::lock_guard<std::mutex> guard(store().lock);
    store().values.clear();
}

void failPropertySet(bool fail) {
    std::lock_guard<std::mutex> guard(store().lock);
    store().refusesChanges = fail;
}

}  // namespace android::hostplatform

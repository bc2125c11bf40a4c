// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>
#include <utility>

namespace android::test {

/** Sets properties, and clears all properties of the process when it goes. */
class ScopedProperties {
  public:
    ScopedProperties(std::initializer_list<std::pair<const char*, const char*>> properties = {});
    ~ScopedProperties();

    ScopedProperties(const ScopedProperties&) = delete;
    ScopedProperties& operator=(const ScopedProperties&) = delete;

    void set(const char* key, const char* value);
};

}  // namespace android::test

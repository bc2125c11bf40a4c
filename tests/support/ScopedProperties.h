// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <initializer_list>
#include <utility>

#include <cutils/properties.h>
#include <hostplatform/Properties.h>

namespace android::test {

/** Sets properties, and clears all properties of the process when it goes. */
class ScopedProperties {
  public:
    ScopedProperties(std::initializer_list<std::pair<const char*, const char*>> properties = {}) {
        for (const auto& [key, value] : properties) set(key, value);
    }
    ~ScopedProperties() {
        hostplatform::failPropertySet(false);
        hostplatform::clearProperties();
    }

    void set(const char* key, const char* value) {
        if (property_set(key, value) != 0) abort();
    }
};

}  // namespace android::test

// SPDX-License-Identifier: Apache-2.0
#include <tests/support/ScopedProperties.h>

#include <cutils/properties.h>
#include <stdio.h>
#include <stdlib.h>

#include <hostplatform/Properties.h>

namespace android::test {

ScopedProperties::ScopedProperties(
        std::initializer_list<std::pair<const char*, const char*>> properties) {
    for (const auto& [key, value] : properties) set(key, value);
}

ScopedProperties::~ScopedProperties() {
    hostplatform::failPropertySet(false);
    hostplatform::clearProperties();
}

void ScopedProperties::set(const char* key, const char* value) {
    if (property_set(key, value) == 0) return;
    fprintf(stderr, "property %s cannot be set\n", key);
    abort();
}

}  // namespace android::test

// SPDX-License-Identifier: Apache-2.0
// Debian's binder classes have no member for the stability level, so it is attached to the object.
#define LOG_TAG "Stability"

#include <binder/Stability.h>

#include <string>

#include <log/log.h>
#include <utils/Mutex.h>
#include <utils/String8.h>

namespace android {
namespace internal {

namespace {

const char kLevelKey = 0;  // its address is the key

// Never destroyed: objects may be passed on while the process exits.
Mutex& levelLock() {
    static Mutex& lock = *new Mutex();
    return lock;
}

}  // namespace

Stability::Level Stability::get(IBinder* binder) {
    const auto level = reinterpret_cast<uintptr_t>(binder->findObject(&kLevelKey));
    return static_cast<Level>(level);
}

status_t Stability::set(IBinder* binder, int32_t stability, bool log) {
    if (!isDeclaredStability(stability)) {
        if (log) ALOGE("Can only set known stability, not %d.", stability);
        return BAD_TYPE;
    }
    Mutex::Autolock lock(levelLock());
    const int32_t current = get(binder);
    if (current == stability) return OK;
    if (current != UNDECLARED) {
        if (log) {
            ALOGE("Interface being set with %s but it is already marked as %s.",
                  stabilityString(stability).c_str(), stabilityString(current).c_str());
        }
        return BAD_TYPE;
    }
    const auto level = static_cast<uintptr_t>(stability);
    binder->attachObject(&kLevelKey, reinterpret_cast<void*>(level), nullptr, nullptr);
    return OK;
}

void Stability::markCompilationUnit(IBinder* binder) {
    const status_t result = set(binder, kLocalStability, true /*log*/);
    LOG_ALWAYS_FATAL_IF(result != OK, "Should only mark known object.");
}

void Stability::markVintf(IBinder* binder) {
    const status_t result = set(binder, VINTF, true /*log*/);
    LOG_ALWAYS_FATAL_IF(result != OK, "Should only mark known object.");
}

void Stability::markVndk(IBinder* binder) {
    const status_t result = set(binder, VENDOR, true /*log*/);
    LOG_ALWAYS_FATAL_IF(result != OK, "Should only mark known object.");
}

void Stability::tryMarkCompilationUnit(IBinder* binder) {
    // One that is marked already keeps its level.
    [[maybe_unused]] const status_t result = set(binder, kLocalStability, false /*log*/);
}

bool Stability::requiresVintfDeclaration(const sp<IBinder>& binder) {
    return check(get(binder.get()), VINTF);
}

void Stability::debugLogStability(const std::string& tag, const sp<IBinder>& binder) {
    ALOGE("%s: stability is %s", tag.c_str(), stabilityString(get(binder.get())).c_str());
}

bool Stability::check(int32_t provided, Level required) {
    if (provided != UNDECLARED && !isDeclaredStability(provided)) {
        ALOGE("Unknown stability when checking interface stability %d.", provided);
        return false;
    }
    return (provided & required) == required;
}

bool Stability::isDeclaredStability(int32_t stability) {
    return stability == VENDOR || stability == SYSTEM || stability == VINTF;
}

std::string Stability::stabilityString(int32_t stability) {
    switch (stability) {
        case UNDECLARED:
            return "undeclared stability";
        case VENDOR:
            return "vendor stability";
        case SYSTEM:
            return "system stability";
        case VINTF:
            return "vintf stability";
        default:
            return "unknown stability " + std::to_string(stability);
    }
}

}  // namespace internal
}  // namespace android

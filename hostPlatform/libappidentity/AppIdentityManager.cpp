// SPDX-License-Identifier: Apache-2.0
#include <closed/AppIdentityManager.h>

#include <stdio.h>

#include <map>
#include <mutex>
#include <string>

#include <hostplatform/AppIdentity.h>

namespace android {

ANDROID_SINGLETON_STATIC_INSTANCE(AppIdentityManager);

namespace {

struct Overrides {
    std::mutex lock;
    std::map<int, std::string> nameByPid;
};

// Never destroyed: codecs may still ask while the process exits.
Overrides& overrides() {
    static Overrides& instance = *new Overrides;
    return instance;
}

std::string commandOfProcess(int pid) {
    const std::string path = "/proc/" + std::to_string(pid) + "/cmdline";
    FILE* const file = fopen(path.c_str(), "re");
    if (file == nullptr) return "";
    // An app's process carries its package name there; no package name is longer.
    char text[256];
    const size_t length = fread(text, 1, sizeof(text) - 1, file);
    fclose(file);
    text[length] = '\0';
    return text;
}

}  // namespace

String8 AppIdentityManager::getPackageNameFromPid(int pid) {
    {
        std::lock_guard<std::mutex> guard(overrides().lock);
        const auto it = overrides().nameByPid.find(pid);
        if (it != overrides().nameByPid.end()) return String8(it->second.c_str());
    }
    return String8(commandOfProcess(pid).c_str());
}

namespace hostplatform {

void setPackageNameForPid(int pid, const char* packageName) {
    std::lock_guard<std::mutex> guard(overrides().lock);
    if (packageName == nullptr) {
        overrides().nameByPid.erase(pid);
    } else {
        overrides().nameByPid[pid] = packageName;
    }
}

}  // namespace hostplatform

}  // namespace android

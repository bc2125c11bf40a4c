// SPDX-License-Identifier: Apache-2.0
// Stands in for libappidentity in a tree that lacks it: an app's process carries its package name,
// with ":" and a suffix where the app has several processes.
#include <stdio.h>
#include <string.h>

#include <android/log.h>

#include <closed/AppIdentityManager.h>

namespace android {

ANDROID_SINGLETON_STATIC_INSTANCE(AppIdentityManager);

String8 AppIdentityManager::getPackageNameFromPid(int pid) {
    char path[32];
    snprintf(path, sizeof(path), "/proc/%d/cmdline", pid);
    char name[256] = "";
    if (FILE* const file = fopen(path, "re"); file != nullptr) {
        const size_t length = fread(name, 1, sizeof(name) - 1, file);
        name[length] = '\0';
        fclose(file);
    }
    __android_log_print(ANDROID_LOG_INFO, "AppIdentity", "process %d is '%s'", pid, name);
    return String8(name, strcspn(name, ":"));
}

}  // namespace android

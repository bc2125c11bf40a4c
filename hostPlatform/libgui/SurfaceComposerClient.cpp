// SPDX-License-Identifier: Apache-2.0
#include <gui/SurfaceComposerClient.h>

#include <mutex>

#include <binder/Binder.h>
#include <hostplatform/Display.h>
#include <ui/DisplayConfig.h>

namespace android {

namespace {

struct Display {
    std::mutex lock;
    sp<IBinder> token = new BBinder();
    ui::Size size{1920, 1080};
    bool isConnected = true;
    status_t configStatus = NO_ERROR;
    int queryCount = 0;
};

// Never destroyed: codecs may still be configured while the process exits.
Display& display() {
    static Display& instance = *new Display;
    return instance;
}

constexpr float kDotsPerInch = 320;
constexpr float kRefreshRateHz = 60;

}  // namespace

sp<IBinder> SurfaceComposerClient::getPhysicalDisplayToken(PhysicalDisplayId displayId) {
    std::lock_guard<std::mutex> guard(display().lock);
    ++display().queryCount;
    return displayId == 0 && display().isConnected ? display().token : nullptr;
}

status_t SurfaceComposerClient::getActiveDisplayConfig(const sp<IBinder>& token,
                                                       DisplayConfig* config) {
    std::lock_guard<std::mutex> guard(display().lock);
    if (token != display().token || !display().isConnected) return NAME_NOT_FOUND;
    if (display().configStatus != NO_ERROR) return display().configStatus;
    *config = DisplayConfig();
    config->resolution = display().size;
    config->xDpi = config->yDpi = kDotsPerInch;
    config->refreshRate = kRefreshRateHz;
    return NO_ERROR;
}

namespace hostplatform {

void setDisplaySize(int width, int height) {
    std::lock_guard<std::mutex> guard(display().lock);
    display().size = ui::Size(width, height);
}

void setDisplayConnected(bool connected) {
    std::lock_guard<std::mutex> guard(display().lock);
    display().isConnected = connected;
}

void setDisplayConfigStatus(status_t status) {
    std::lock_guard<std::mutex> guard(display().lock);
    display().configStatus = status;
}

int displayQueryCount() {
    std::lock_guard<std::mutex> guard(display().lock);
    return display().queryCount;
}

}  // namespace hostplatform

}  // namespace android

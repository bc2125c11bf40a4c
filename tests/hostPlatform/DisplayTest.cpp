// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <gui/SurfaceComposerClient.h>
#include <hostplatform/Display.h>
#include <ui/DisplayConfig.h>

namespace android {
namespace {

TEST(DisplayTest, primaryDisplayTellsItsSize) {
    const int before = hostplatform::displayQueryCount();
    const sp<IBinder> token = SurfaceComposerClient::getPhysicalDisplayToken(0);
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(SurfaceComposerClient::getPhysicalDisplayToken(1), nullptr);
    EXPECT_EQ(hostplatform::displayQueryCount() - before, 2);

    DisplayConfig config;
    EXPECT_EQ(config.resolution, ui::Size(-1, -1));
    ASSERT_EQ(SurfaceComposerClient::getActiveDisplayConfig(token, &config), NO_ERROR);
    EXPECT_EQ(config.resolution, ui::Size(1920, 1080));
    hostplatform::setDisplaySize(3840, 2160);
    ASSERT_EQ(SurfaceComposerClient::getActiveDisplayConfig(token, &config), NO_ERROR);
    EXPECT_EQ(config.resolution, ui::Size(3840, 2160));
    hostplatform::setDisplaySize(1920, 1080);
}

TEST(DisplayTest, whenQueryFails_configIsUntouched) {
    const sp<IBinder> token = SurfaceComposerClient::getPhysicalDisplayToken(0);
    DisplayConfig config;
    EXPECT_EQ(SurfaceComposerClient::getActiveDisplayConfig(nullptr, &config), NAME_NOT_FOUND);
    hostplatform::setDisplayConfigStatus(NO_INIT);
    EXPECT_EQ(SurfaceComposerClient::getActiveDisplayConfig(token, &config), NO_INIT);
    hostplatform::setDisplayConfigStatus(NO_ERROR);
    hostplatform::setDisplayConnected(false);
    EXPECT_EQ(SurfaceComposerClient::getPhysicalDisplayToken(0), nullptr);
    EXPECT_EQ(SurfaceComposerClient::getActiveDisplayConfig(token, &config), NAME_NOT_FOUND);
    hostplatform::setDisplayConnected(true);
    EXPECT_EQ(config.resolution, ui::Size());
}

}  // namespace
}  // namespace android

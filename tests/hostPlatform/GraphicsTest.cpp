// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <string.h>

#include <hostplatform/GraphicBuffers.h>
#include <system/graphics.h>
#include <ui/GraphicBuffer.h>

namespace android {
namespace {

sp<GraphicBuffer> makeBuffer(uint32_t width, uint32_t height, PixelFormat format) {
    return new GraphicBuffer(width, height, format, 1, GRALLOC_USAGE_SW_READ_OFTEN);
}

TEST(GraphicBufferTest, mappingShowsTheWholePicture) {
    const struct {
        PixelFormat format;
        size_t size;
        int32_t bytesPerPixel;
    } cases[] = {
            {HAL_PIXEL_FORMAT_RGBA_8888, 5 * 3 * 4, 4},
            {HAL_PIXEL_FORMAT_RGB_565, 5 * 3 * 2, 2},
            {HAL_PIXEL_FORMAT_YV12, 5 * 3 + 2 * 3 * 2, 0},
            {HAL_PIXEL_FORMAT_YCBCR_P010, 2 * (5 * 3 + 2 * 3 * 2), 0},
    };
    for (const auto& c : cases) {
        const sp<GraphicBuffer> buffer = makeBuffer(5, 3, c.format);
        void* address = nullptr;
        int32_t bytesPerPixel = -1;
        int32_t bytesPerStride = -1;
        ASSERT_EQ(buffer->lock(GRALLOC_USAGE_SW_WRITE_OFTEN, &address, &bytesPerPixel,
                               &bytesPerStride),
                  NO_ERROR);
        EXPECT_EQ(bytesPerPixel, c.bytesPerPixel);
        EXPECT_EQ(bytesPerStride, c.bytesPerPixel * 5);
        memset(address, 0xa5, c.size);
        EXPECT_EQ(buffer->unlock(), NO_ERROR);

        ASSERT_EQ(buffer->lock(GRALLOC_USAGE_SW_READ_OFTEN, &address), NO_ERROR);
        EXPECT_EQ(static_cast<uint8_t*>(address)[c.size - 1], 0xa5);
        EXPECT_EQ(hostplatform::lockedBufferCount(), 1);
        buffer->unlock();
        EXPECT_EQ(hostplatform::lockedBufferCount(), 0);
    }
}

TEST(GraphicBufferTest, whenLockFails_nothingIsMapped) {
    const sp<GraphicBuffer> withoutMemory = new GraphicBuffer;
    void* address = &address;
    EXPECT_EQ(withoutMemory->lock(GRALLOC_USAGE_SW_READ_OFTEN, &address), BAD_VALUE);
    EXPECT_EQ(makeBuffer(4, 4, HAL_PIXEL_FORMAT_RGBA_8888)
                      ->lock(GRALLOC_USAGE_SW_READ_OFTEN, Rect(1, 1, 5, 4), &address),
              BAD_VALUE);
    EXPECT_EQ(address, &address);
    EXPECT_EQ(hostplatform::lockedBufferCount(), 0);
}

}  // namespace
}  // namespace android

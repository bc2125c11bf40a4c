// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include <hardware/gralloc.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <ui/Rect.h>

namespace android {

using PixelFormat = int32_t;

/**
 * A picture in plain memory. Lock and unlock may be called from any thread; a buffer may be locked
 * several times.
 */
class GraphicBuffer : public RefBase {
  public:
    enum {
        USAGE_SW_READ_NEVER = GRALLOC_USAGE_SW_READ_NEVER,
        USAGE_SW_READ_RARELY = GRALLOC_USAGE_SW_READ_RARELY,
        USAGE_SW_READ_OFTEN = GRALLOC_USAGE_SW_READ_OFTEN,
        USAGE_SW_READ_MASK = GRALLOC_USAGE_SW_READ_MASK,
        USAGE_SW_WRITE_NEVER = GRALLOC_USAGE_SW_WRITE_NEVER,
        USAGE_SW_WRITE_RARELY = GRALLOC_USAGE_SW_WRITE_RARELY,
        USAGE_SW_WRITE_OFTEN = GRALLOC_USAGE_SW_WRITE_OFTEN,
        USAGE_SW_WRITE_MASK = GRALLOC_USAGE_SW_WRITE_MASK,
        USAGE_HW_TEXTURE = GRALLOC_USAGE_HW_TEXTURE,
        USAGE_HW_RENDER = GRALLOC_USAGE_HW_RENDER,
        USAGE_HW_COMPOSER = GRALLOC_USAGE_HW_COMPOSER,
        USAGE_PROTECTED = GRALLOC_USAGE_PROTECTED,
        USAGE_HW_VIDEO_ENCODER = GRALLOC_USAGE_HW_VIDEO_ENCODER,
    };

    /** A buffer without memory: it cannot be locked. */
    GraphicBuffer();
    /** Zeroed memory for a HAL_PIXEL_FORMAT_*; rows follow each other without a gap. */
    GraphicBuffer(uint32_t width, uint32_t height, PixelFormat format, uint32_t layerCount,
                  uint64_t usage, std::string requestorName = "<Unknown>");

    status_t initCheck() const { return mMemory.empty() ? NO_INIT : NO_ERROR; }
    uint32_t getWidth() const { return mWidth; }
    uint32_t getHeight() const { return mHeight; }
    uint32_t getStride() const { return mWidth; }
    uint64_t getUsage() const { return mUsage; }
    PixelFormat getPixelFormat() const { return mFormat; }
    Rect getBounds() const { return Rect(mWidth, mHeight); }

    /** Maps the memory. BAD_VALUE without memory; planar formats report 0 bytes a pixel. */
    status_t lock(uint32_t inUsage, void** vaddr, int32_t* outBytesPerPixel = nullptr,
                  int32_t* outBytesPerStride = nullptr);
    status_t lock(uint32_t inUsage, const Rect& rect, void** vaddr,
                  int32_t* outBytesPerPixel = nullptr, int32_t* outBytesPerStride = nullptr);
    status_t unlock();

  private:
    ~GraphicBuffer() override = default;

    uint32_t mWidth = 0;
    uint32_t mHeight = 0;
    PixelFormat mFormat = 0;
    uint64_t mUsage = 0;
    std::vector<uint8_t> mMemory;
};

}  // namespace android

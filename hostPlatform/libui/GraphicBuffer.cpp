// SPDX-License-Identifier: Apache-2.0
#include <atomic>

#include <hostplatform/GraphicBuffers.h>
#include <system/graphics.h>
#include <ui/GraphicBuffer.h>

namespace android {

namespace {

std::atomic<status_t> gLockFailure{NO_ERROR};
std::atomic<bool> gMapsToNull{false};
std::atomic<int> gLockCount{0};

struct Layout {
    /** 0 for planar formats. */
    int32_t bytesPerPixel;
    /** All planes together, in eighths of a byte for each pixel. */
    uint32_t bitsPerPixel;
};

Layout layoutOf(PixelFormat format) {
    switch (format) {
        case HAL_PIXEL_FORMAT_RGB_565:
            return {2, 16};
        case HAL_PIXEL_FORMAT_RGB_888:
            return {3, 24};
        case HAL_PIXEL_FORMAT_RGBA_FP16:
            return {8, 64};
        case HAL_PIXEL_FORMAT_BLOB:
            return {1, 8};
        case HAL_PIXEL_FORMAT_YV12:
        case HAL_PIXEL_FORMAT_YCBCR_420_888:
        case HAL_PIXEL_FORMAT_YCRCB_420_SP:
            return {0, 12};
        case HAL_PIXEL_FORMAT_YCBCR_P010:
            return {0, 24};
        default:
            return {4, 32};
    }
}

}  // namespace

GraphicBuffer::GraphicBuffer() = default;

GraphicBuffer::GraphicBuffer(uint32_t width, uint32_t height, PixelFormat format,
                             // NOLINTNEXTLINE(performance-unnecessary-value-param): the platform's
                             uint32_t layerCount, uint64_t usage, std::string /*requestorName*/)
    : mWidth(width),
      mHeight(height),
      mFormat(format),
      mUsage(usage),
      // Chroma planes of odd pictures are rounded up.
      mMemory((uint64_t{width} + width % 2) * (uint64_t{height} + height % 2) *
              layoutOf(format).bitsPerPixel / 8 * layerCount) {}

status_t GraphicBuffer::lock(uint32_t inUsage, void** vaddr, int32_t* outBytesPerPixel,
                             int32_t* outBytesPerStride) {
    return lock(inUsage, getBounds(), vaddr, outBytesPerPixel, outBytesPerStride);
}

status_t GraphicBuffer::lock(uint32_t /*inUsage*/, const Rect& rect, void** vaddr,
                             int32_t* outBytesPerPixel, int32_t* outBytesPerStride) {
    const status_t failure = gLockFailure.load(std::memory_order_relaxed);
    if (failure != NO_ERROR) return failure;
    const bool isInside = rect.left >= 0 && rect.top >= 0 && rect.left <= rect.right &&
                          rect.top <= rect.bottom && static_cast<uint32_t>(rect.right) <= mWidth &&
                          static_cast<uint32_t>(rect.bottom) <= mHeight;
    if (mMemory.empty() || !isInside) return BAD_VALUE;
    const int32_t bytesPerPixel = layoutOf(mFormat).bytesPerPixel;
    if (outBytesPerPixel != nullptr) *outBytesPerPixel = bytesPerPixel;
    if (outBytesPerStride != nullptr) *outBytesPerStride = bytesPerPixel * mWidth;
    *vaddr = gMapsToNull.load(std::memory_order_relaxed) ? nullptr : mMemory.data();
    gLockCount.fetch_add(1, std::memory_order_relaxed);
    return NO_ERROR;
}

status_t GraphicBuffer::unlock() {
    gLockCount.fetch_sub(1, std::memory_order_relaxed);
    return NO_ERROR;
}

namespace hostplatform {

void setBufferLockFailure(status_t status) {
    gLockFailure.store(status, std::memory_order_relaxed);
}

void setBufferMapsToNull(bool mapsToNull) {
    gMapsToNull.store(mapsToNull, std::memory_order_relaxed);
}

int lockedBufferCount() {
    return gLockCount.load(std::memory_order_relaxed);
}

}  // namespace hostplatform

}  // namespace android

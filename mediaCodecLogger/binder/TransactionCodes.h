// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>

#include <binder/IBinder.h>

// The codes under which calls travel, one enumeration an interface. They never change: a process
// may meet a counterpart of another age. docs/service-protocol.md has what each carries.

namespace android {

/** android.media.IMediaCodecLoggerClient, in the order of its methods. */
namespace client_code {
enum : uint32_t {
    GET_STATUS = IBinder::FIRST_CALL_TRANSACTION,
    GET_PACKAGE_NAME,
    IS_VIDEO_CLIENT,
    GET_PID,
    INITIALIZE,  // never sent and not served
    GET_CLIENT_RESOLUTION,
    GET_CLIENT_HDR_TYPE,
    GET_CLIENT_BIT_DEPTH,
    GET_CLIENT_SCAN_TYPE,
    GET_CLIENT_COLOR_PROPERTIES,
    GET_TIME_SINCE_LAST_FRAME_RENDERED,
    GET_UID,
    GET_BUFFER_COUNT_SINCE_LAST_FLUSH,
    IS_VIDEO_CLIENT_USING_SECURE_MEM,
    GET_CLIENT_CODEC_FORMAT,
};
}  // namespace client_code

/**
 * android.media.IMediaCodecLoggerService. The codes 7 to 14 are the methods of the observers'
 * interface in their order, which two methods of the codecs' interface cross.
 */
namespace service_code {
enum : uint32_t {
    REGISTER_CLIENT = IBinder::FIRST_CALL_TRANSACTION,
    UNREGISTER_CLIENT,
    GET_ACTIVE_VIDEO_CLIENT,
    UPDATE_HIDL_MEDIA_METRICS,
    ON_FIRST_FRAME_RENDERED,
    ON_OUT_BUFFER_AVAILABLE_AFTER_DELAY,
    REGISTER_LISTENER,
    UNREGISTER_LISTENER,
    GET_ACTIVE_VIDEO_CLIENTS,
    GET_TIME_SINCE_LAST_FRAME_RENDERED,
    GET_UID,
    GET_BUFFER_COUNT_SINCE_LAST_FLUSH,
    IS_VIDEO_CLIENT_USING_SECURE_MEM,
    SET_MITIGATE_FRAME_DROP_ALLOWLIST,
    IS_IN_MITIGATE_FRAME_DROP_ALLOWLIST,
    GET_OLDEST_AUDIO_CLIENT_CODEC,
};
}  // namespace service_code

/** android.media.IMediaCodecLoggerListener. */
namespace listener_code {
enum : uint32_t {
    NOTIFY_FIRST_FRAME_RENDERED = IBinder::FIRST_CALL_TRANSACTION,
    NOTIFY_OUT_BUFFER_AVAILABLE_AFTER_DELAY,
    NOTIFY_VIDEO_CLIENT_UNREGISTERED,
};
}  // namespace listener_code

}  // namespace android

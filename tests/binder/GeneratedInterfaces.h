// SPDX-License-Identifier: Apache-2.0
// What the platform's generator makes of our .aidl files, as android::generated instead of
// android::media so that it can stand beside the hand-written form.
#pragma once

#include <limits>
#include <memory>

#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <binder/Status.h>

#define media generated
#include <android/media/BnMediaCodecLoggerListener.h>
#include <android/media/BnMediaCodecLoggerService.h>
#include <android/media/BpMediaCodecLoggerListener.h>
#include <android/media/BpMediaCodecLoggerService.h>
#undef media

// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/CodecIdentity.h>

#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace android::logger {

namespace {

constexpr char kDefaultPackageName[] = "com.android.mediaplayer";
/** A shorter process name is that of no app. */
constexpr size_t kMinProcessName = 3;

/** Some mimes carry more than the format's name; the first word that occurs stands for them. */
constexpr const char* kFormatWords[] = {"vp8", "vp9", "mp4v", "amr", "mp4a", "g711"};

constexpr struct {
    TagWord bit;
    const char* word;
} kTagWords[] = {{TAG_VIDEO, "video"},
                 {TAG_AUDIO, "audio"},
                 {TAG_HW, "HW"},
                 {TAG_SW, "SW"},
                 {TAG_RAW, "raw"}};

bool contains(const AString& text, const char* word) {
    return text.find(word) >= 0;
}

/** The process name of `pid`: its command line up to the first NUL, at most 69 characters. */
AString readProcessName(int pid) {
    char path[32];
    char line[70] = {};
    snprintf(path, sizeof(path), "/proc/%d/cmdline", pid);
    if (FILE* file = fopen(path, "re")) {
        if (fgets(line, sizeof(line), file) == nullptr) line[0] = '\0';
        fclose(file);
    }
    return AString(strlen(line) < kMinProcessName ? kDefaultPackageName : line);
}

/** For example HW.c2.video.avc; every Google component is software, and audio has no hardware. */
AString codecTag(const AString& codecName, const AString& mime, bool tunneled) {
    AString tag;
    const bool isVideo = contains(mime, "video");
    if (contains(codecName, "google") || codecName.startsWithIgnoreCase("c2.android")) {
        tag.append("SW.");
    } else {
        if (isVideo && tunneled) tag.append("tunneled.");
        tag.append(isVideo ? "HW." : "VND.");
    }
    if (codecName.startsWithIgnoreCase("omx.")) {
        tag.append("omx.");
    } else if (codecName.startsWithIgnoreCase("c2.")) {
        tag.append("c2.");
    }
    tag.append(isVideo ? "video." : contains(mime, "audio") ? "audio." : "unknown.");
    return tag;
}

}  // namespace

CodecIdentity::CodecIdentity(int pid, uint32_t uid)
    : mPid(pid == -1 ? getpid() : pid), mUid(uid), mPackageName(readProcessName(mPid)) {}

void CodecIdentity::configure(const AString& codecName, const AString& mime, uint32_t flags) {
    mCodecName = codecName;
    mFlags = flags;
    AString format;
    appendCodecFormat(mime, format);
    AString tag = codecTag(codecName, mime, isTunneled());
    tag.append(format);

    uint32_t words = 0;
    for (const auto& [bit, word] : kTagWords) {
        if (contains(tag, word)) words |= bit;
    }
    mTagWords = words;

    Mutex::Autolock lock(mTextLock);
    mCodecTag = tag;
    mCodecFormat = format;
}

AString CodecIdentity::copyCodecFormat() const {
    Mutex::Autolock lock(mTextLock);
    return mCodecFormat;
}

AString CodecIdentity::replacePkgNameWithPid(const char* text) const {
    AString result;
    result.append(mPid);
    if (text != nullptr) {
        const size_t skip = strlen(text) > mPackageName.size() ? mPackageName.size() : 0;
        result.append(text + skip);
    }
    return result;
}

void appendCodecFormat(const AString& mime, AString& out) {
    for (const char* word : kFormatWords) {
        if (contains(mime, word)) {
            out.append(word);
            return;
        }
    }
    const char* slash = strchr(mime.c_str(), '/');
    out.append(slash != nullptr ? slash + 1 : mime.c_str());
}

}  // namespace android::logger

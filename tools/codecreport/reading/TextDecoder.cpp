// SPDX-License-Identifier: Apache-2.0
#include "reading/TextDecoder.h"

#include <errno.h>
#include <iconv.h>

namespace android::codecreport {

namespace {

struct Mark {
    std::string_view bytes;
    const char* encoding;
};
constexpr Mark kMarks[] = {
        {"\xef\xbb\xbf", nullptr}, {"\xff\xfe", "UTF-16LE"}, {"\xfe\xff", "UTF-16BE"}};
constexpr char kReplacement[] = "\xef\xbf\xbd";

}  // namespace

TextDecoder::~TextDecoder() {
    restart();
}

void TextDecoder::restart() {
    if (mConverter != nullptr) iconv_close(mConverter);
    mConverter = nullptr;
    mRecognised = false;
    mPending.clear();
}

/** False while what has come may yet become a mark. */
bool TextDecoder::recognise() {
    for (const Mark& mark : kMarks) {
        const bool isShort = mPending.size() < mark.bytes.size();
        if (isShort && mPending == mark.bytes.substr(0, mPending.size())) return false;
        if (mPending.compare(0, mark.bytes.size(), mark.bytes) != 0) continue;
        mPending.erase(0, mark.bytes.size());
        if (mark.encoding != nullptr) mConverter = iconv_open("UTF-8", mark.encoding);
        break;
    }
    mRecognised = true;
    return true;
}

std::string_view TextDecoder::decode(std::string_view bytes) {
    if (mRecognised && mConverter == nullptr) return bytes;
    mPending += bytes;
    mText.clear();
    if (!mRecognised && !recognise()) return {};
    if (mConverter == nullptr) {
        mText.swap(mPending);
        mPending.clear();
    } else {
        convert();
    }
    return mText;
}

void TextDecoder::convert() {
    char* in = mPending.data();
    size_t left = mPending.size();
    char block[16384];
    while (left > 1) {
        char* out = block;
        size_t room = sizeof(block);
        const bool failed = iconv(mConverter, &in, &left, &out, &room) == static_cast<size_t>(-1);
        const int why = failed ? errno : 0;
        mText.append(block, out - block);
        if (why == EINVAL) break;
        if (why != EILSEQ) continue;
        mText += kReplacement;
        in += 2;
        left -= 2;
    }
    mPending.erase(0, mPending.size() - left);
}

}  // namespace android::codecreport

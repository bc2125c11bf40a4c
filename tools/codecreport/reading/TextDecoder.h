// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace android::codecreport {

/**
 * Makes UTF-8 of a text that begins with the mark of UTF-16, as some shells write what they
 * redirect; any other passes as it is, without the mark of UTF-8.
 */
class TextDecoder {
  public:
    TextDecoder() = default;
    ~TextDecoder();
    TextDecoder(const TextDecoder&) = delete;
    TextDecoder& operator=(const TextDecoder&) = delete;

    /** A new text begins. */
    void restart();

    /** @return good until the next call and as long as `bytes` */
    std::string_view decode(std::string_view bytes);

  private:
    bool recognise();
    void convert();

    bool mRecognised = false;
    /** iconv_t, or null where the text passes as it is. */
    void* mConverter = nullptr;
    /** The beginning until its form is known, then what is not a whole character yet. */
    std::string mPending;
    std::string mText;
};

}  // namespace android::codecreport

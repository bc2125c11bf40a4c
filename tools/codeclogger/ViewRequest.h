// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tools/codeclogger/Views.h>
#include <utils/Errors.h>

namespace android::codeclogger {

/** What is to be shown, as codecloggerctl is asked for it on its command line and a dump by its
 * words. */
struct ViewRequest {
    enum class Subject { LIST, STATUS, ALLOWLIST };
    enum class Format { TEXT, JSON, OPENMETRICS };

    Subject subject = Subject::LIST;
    Format format = Format::TEXT;
    /** Handles or client ids that status is to show; all when empty. */
    std::vector<int64_t> ids;
};

/** The words that a dump takes. */
inline constexpr char kDumpWords[] = "[list|status [ID...]|allowlist] [--json|--openmetrics]";

/** Nothing for what is no codec's number or client id. */
std::optional<int64_t> parseId(const std::string& text);

/** Reads the words of a dump; otherwise says what is wrong. */
std::string parseWords(const std::vector<std::string>& words, ViewRequest* request);

struct View {
    /** NAME_NOT_FOUND if no codec has one of the ids; `text` then says so. */
    status_t status = OK;
    std::string text;
};

/** Asks the codecs that the request is about and shows what they and the service know. */
View show(const ViewRequest& request, const ServiceState& state, CodecQuery* query);

}  // namespace android::codeclogger

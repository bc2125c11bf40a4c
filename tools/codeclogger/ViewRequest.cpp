// SPDX-License-Identifier: Apache-2.0
#include "ViewRequest.h"

#include <errno.h>
#include <inttypes.h>
#include <stdlib.h>

#include <algorithm>

namespace android::codeclogger {

namespace {

/** The clients that have one of the ids; nothing, with what is wrong, when one has no client. */
std::vector<ClientEntry> select(const std::vector<int64_t>& ids,
                                const std::vector<ClientEntry>& clients, std::string* wrong) {
    if (ids.empty()) return clients;
    std::vector<ClientEntry> selected;
    for (const int64_t id : ids) {
        const auto client = std::find_if(clients.begin(), clients.end(), [id](const auto& c) {
            return c.handle == id || c.id == id;
        });
        if (client == clients.end()) {
            *wrong = "no codec has number or id " + std::to_string(id) +
                     "; list shows those there are";
            return {};
        }
        selected.push_back(*client);
    }
    return selected;
}

std::string codecsText(const ViewRequest& request, const ServiceState& state,
                       const std::vector<CodecInfo>& codecs) {
    switch (request.format) {
        case ViewRequest::Format::JSON: {
            std::vector<Json> list;
            list.reserve(codecs.size());
            for (const CodecInfo& codec : codecs) list.push_back(codecJson(codec));
            return stateJson(state, list).text(false);
        }
        case ViewRequest::Format::OPENMETRICS:
            return openMetricsText(state, codecs);
        case ViewRequest::Format::TEXT:
            break;
    }
    return request.subject == ViewRequest::Subject::LIST ? listText(codecs) : statusText(codecs);
}

}  // namespace

std::optional<int64_t> parseId(const std::string& text) {
    const char* const start = text.c_str() + (text[0] == '#' ? 1 : 0);
    char* end = nullptr;
    errno = 0;
    const int64_t id = strtoll(start, &end, 0);
    if (errno != 0 || *end != '\0' || end == start) return std::nullopt;
    return id;
}

std::string parseWords(const std::vector<std::string>& words, ViewRequest* request) {
    using Subject = ViewRequest::Subject;
    using Format = ViewRequest::Format;
    bool hasSubject = false;
    for (const std::string& word : words) {
        if (word == "--json") {
            request->format = Format::JSON;
        } else if (word == "--openmetrics") {
            request->format = Format::OPENMETRICS;
        } else if (hasSubject && request->subject == Subject::STATUS) {
            const std::optional<int64_t> id = parseId(word);
            if (!id) return word + ": not a codec's number or client id";
            request->ids.push_back(*id);
        } else if (!hasSubject && (word == "list" || word == "status" || word == "allowlist")) {
            request->subject = word == "list"     ? Subject::LIST
                               : word == "status" ? Subject::STATUS
                                                  : Subject::ALLOWLIST;
            hasSubject = true;
        } else {
            return word + ": not expected";
        }
    }
    if (request->subject == Subject::ALLOWLIST && request->format == Format::OPENMETRICS) {
        return "--openmetrics goes with list and status only";
    }
    return "";
}

View show(const ViewRequest& request, const ServiceState& state, CodecQuery* query) {
    if (request.subject == ViewRequest::Subject::ALLOWLIST) {
        return {OK, request.format == ViewRequest::Format::JSON
                            ? allowlistJson(state.allowlist).text(false)
                            : allowlistText(state.allowlist)};
    }
    std::string wrong;
    const std::vector<ClientEntry> clients = select(request.ids, state.clients, &wrong);
    if (!wrong.empty()) return {NAME_NOT_FOUND, wrong};
    return {OK, codecsText(request, state, query->ask(clients))};
}

}  // namespace android::codeclogger

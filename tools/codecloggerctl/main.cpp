// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>

#include <algorithm>

#include <binder/ProcessState.h>
#include <nlohmann/json.hpp>

#include "CodecInfo.h"
#include "Options.h"
#include "Service.h"
#include "Views.h"
#include "Watch.h"

namespace codecloggerctl {

namespace {

/** Keeps the clients that have one of the ids; false, with a message, when one has no client. */
bool select(const std::vector<int64_t>& ids, std::vector<codeclogger::ClientEntry>* clients) {
    if (ids.empty()) return true;
    std::vector<codeclogger::ClientEntry> selected;
    for (const int64_t id : ids) {
        const auto client = std::find_if(clients->begin(), clients->end(), [&](const auto& c) {
            return c.handle == id || c.id == id;
        });
        if (client == clients->end()) {
            fprintf(stderr,
                    "codecloggerctl: no codec has number or id %lld; 'codecloggerctl list' shows "
                    "those there are\n",
                    static_cast<long long>(id));
            return false;
        }
        selected.push_back(*client);
    }
    *clients = std::move(selected);
    return true;
}

int show(const Service& service, const Options& options) {
    codeclogger::ServiceState state{};
    if (!readState(service, &state)) return EXIT_NO_SERVICE;
    std::vector<codeclogger::ClientEntry> clients = state.clients;
    if (!select(options.ids, &clients)) return EXIT_FAILED;
    const std::vector<CodecInfo> codecs = CodecQuery().ask(clients);
    std::string text;
    switch (options.format) {
        case Format::JSON:
            text = dump(stateJson(state, codecs), false);
            break;
        case Format::OPENMETRICS:
            text = openMetricsText(state, codecs);
            break;
        case Format::TEXT:
            text = options.command == Command::LIST ? listText(codecs) : statusText(codecs);
            break;
    }
    return print(text) ? EXIT_OK : EXIT_FAILED;
}

int showAllowlist(const Service& service, const Options& options) {
    codeclogger::ServiceState state{};
    if (!readState(service, &state)) return EXIT_NO_SERVICE;
    const std::string text = options.format == Format::JSON
                                     ? dump(allowlistJson(state.allowlist), false)
                                     : allowlistText(state.allowlist);
    return print(text) ? EXIT_OK : EXIT_FAILED;
}

int setAllowlist(const Service& service, const Options& options) {
    const auto label =
            options.label.empty() ? nullptr : std::make_unique<std::string>(options.label);
    const android::binder::Status status = service.logger->setMitigateFrameDropAllowlist(
            label, options.packages, options.exceptions);
    if (status.isOk()) return EXIT_OK;
    if (status.transactionError() == android::BAD_VALUE) {
        fputs("codecloggerctl: a name or the label is not UTF-8\n", stderr);
        return EXIT_FAILED;
    }
    return serviceGone();
}

int run(const Options& options) {
    Service service;
    if (!findService(&service)) return EXIT_NO_SERVICE;
    android::ProcessState::self()->startThreadPool();
    switch (options.command) {
        case Command::LIST:
        case Command::STATUS:
            return show(service, options);
        case Command::WATCH:
            return watch(service, options);
        case Command::LISTEN:
            return listen(service, options);
        case Command::ALLOWLIST_SHOW:
            return showAllowlist(service, options);
        case Command::ALLOWLIST_SET:
            return setAllowlist(service, options);
    }
    return EXIT_FAILED;
}

}  // namespace

}  // namespace codecloggerctl

int main(int argc, char** argv) {
    return codecloggerctl::run(codecloggerctl::parseOptions(argc, argv));
}

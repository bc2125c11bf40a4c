// SPDX-License-Identifier: Apache-2.0
#include "output/HtmlPage.h"

#include <string_view>

#include "Resources.h"
#include "output/JsonReport.h"
#include "output/PageReport.h"

namespace android::codecreport {

namespace {

/** Inside a script element only "</" and "<!--" could end it; JSON may write '<' as an escape. */
std::string inScript(std::string json) {
    for (size_t at = json.find('<'); at != std::string::npos; at = json.find('<', at + 6)) {
        json.replace(at, 1, "\\u003c");
    }
    return json;
}

/** What the page explains beside its values: report keys and JSON keys with their meaning. */
nlohmann::ordered_json meanings(const Reference& reference) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const Reference::Table& table : reference.tables()) {
        if (table.name != "report") continue;
        for (const ReferenceEntry& entry : table.entries) {
            json[entry.fact("json")] = {{"key", entry.id},
                                        {"unit", entry.fact("unit")},
                                        {"meaning", entry.fact("meaning")}};
        }
    }
    return json;
}

}  // namespace

std::string htmlPage(const nlohmann::ordered_json& report, const Reference& reference) {
    const std::pair<std::string_view, std::string> parts[] = {
            {"@PLOT_LICENSE@", std::string(resources::plotLicense())},
            {"@PLOT_CSS@", std::string(resources::plotCss())},
            {"@PAGE_CSS@", std::string(resources::pageCss())},
            {"@MEANINGS@", inScript(dump(meanings(reference), false))},
            {"@REPORT@", inScript(dump(pageReport(report), false))},
            {"@PAGE_JS@", std::string(resources::pageJs())},
    };
    std::string page;
    std::string_view rest = resources::pageHtml();
    // Marks stand in this order, so that nothing is looked for in what was filled in.
    for (const auto& [mark, text] : parts) {
        const size_t at = rest.find(mark);
        page.append(rest.substr(0, at));
        page.append(text);
        rest.remove_prefix(at + mark.size());
    }
    page.append(rest);
    return page;
}

}  // namespace android::codecreport

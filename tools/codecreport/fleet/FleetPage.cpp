// SPDX-License-Identifier: Apache-2.0
#include "fleet/FleetPage.h"

#include <inttypes.h>
#include <math.h>
#include <stdarg.h>
#include <stdio.h>

#include <algorithm>

#include "Resources.h"

namespace android::codecreport {

namespace {

/** printf into a string; what comes from logs goes through escaped() first. */
std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string text(const char* format, ...) {
    char buffer[1000];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

std::string escaped(const std::string& plain) {
    std::string html;
    for (const char c : plain) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

std::string number(double value) {
    return text(value >= 100 ? "%.0f" : value >= 10 ? "%.1f" : "%.2f", value);
}

std::string cell(const std::string& html) {
    return "<td class=\"number\">" + html + "</td>";
}

std::string known(bool isKnown, const std::string& html) {
    return cell(isKnown ? html : "–");
}

/** Bars of relative heights. */
std::string spread(const std::vector<uint64_t>& counts, const std::string& label) {
    const uint64_t most = *std::max_element(counts.begin(), counts.end());
    if (most == 0) return "";
    const double width = 112.0 / counts.size();
    std::string path;
    for (size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] == 0) continue;
        const double height = std::max(1.0, 22.0 * counts[i] / most);
        path += text("M%.1f 22v-%.1fh%.1fV22z", i * width, height, width - 1);
    }
    return "<svg class=\"spread\" viewBox=\"0 0 112 22\" role=\"img\" aria-label=\"" + label +
           "\"><path d=\"" + path + "\"/></svg>";
}

std::string startupSpread(const Histogram& histogram) {
    constexpr int kBars = 16;
    std::vector<uint64_t> counts;
    uint64_t below = 0;
    for (int i = 1; i <= kBars; ++i) {
        const uint64_t until = i == kBars ? histogram.count()
                                          : histogram.countBelow(llround(25 * pow(1000, i / 16.0)));
        counts.push_back(until - below);
        below = until;
    }
    return spread(counts, "Spread of start-up times");
}

std::string standingSpread(const Histogram& perMille) {
    std::vector<uint64_t> counts;
    uint64_t below = 0;
    for (const int64_t limit : {1, 3, 10, 30, 100, 300}) {
        const uint64_t until = perMille.countBelow(limit);
        counts.push_back(until - below);
        below = until;
    }
    counts.push_back(perMille.count() - below);
    return spread(counts, "Spread of stall ratios");
}

/** Wilson's interval of a share. */
std::string stutterText(const FleetGroup& group) {
    constexpr double kZ = 1.96;
    const double n = static_cast<double>(group.judged);
    const double share = group.stuttered / n;
    const double middle = (share + kZ * kZ / (2 * n)) / (1 + kZ * kZ / n);
    const double width =
            kZ * sqrt(share * (1 - share) / n + kZ * kZ / (4 * n * n)) / (1 + kZ * kZ / n);
    return text("%.1f&nbsp;%% <span class=\"muted\">(%.1f–%.1f)</span>", share * 100,
                std::max(0.0, middle - width) * 100, std::min(1.0, middle + width) * 100);
}

std::string className(Cause cause) {
    std::string name = toString(cause);
    std::replace(name.begin(), name.end(), '_', '-');
    return "cause-" + name;
}

/** What each cause has of a sum, as a bar and in words. */
std::string causeCell(const std::string& before, const std::array<double, kCauseCount>& sums) {
    double all = 0;
    for (const double sum : sums) all += sum;
    if (all <= 0) return "<td>" + (before.empty() ? "–" : before) + "</td>";
    std::string bar;
    std::string words;
    for (size_t i = 0; i < kCauseCount; ++i) {
        const double share = sums[i] / all;
        if (share < 0.005) continue;
        const Cause cause = static_cast<Cause>(i);
        bar += "<span class=\"swatch " + className(cause) +
               text("\" style=\"flex:%.3f;margin:0;height:auto;border:0\"></span>", share);
        words += text("%s%s %.0f&nbsp;%%", words.empty() ? "" : ", ", inWords(cause), share * 100);
    }
    return "<td class=\"words\">" + before + "<div class=\"shares\" aria-hidden=\"true\">" + bar +
           "</div>" + words + "</td>";
}

std::string sessionLink(int64_t id, const std::string& folder, const std::string& html) {
    if (folder.empty() || id == 0) return html;
    return "<a href=\"" + escaped(folder) + text("/%" PRId64 ".html\">", id) + html + "</a>";
}

constexpr char kGroupHead[] =
        "<th scope=\"col\" class=\"number\">sessions</th><th scope=\"col\" "
        "class=\"number\">hours</th>"
        "<th scope=\"col\" class=\"number\">stuttered</th>"
        "<th scope=\"col\" class=\"number\">stalls in an hour</th><th scope=\"col\">stood by</th>"
        "<th scope=\"col\" class=\"number\">start-up p50, p90, p99, ms</th>"
        "<th scope=\"col\">never shown in an hour</th><th scope=\"col\" "
        "class=\"number\">errors</th>"
        "<th scope=\"col\" class=\"number\">most in stalls</th></tr></thead><tbody>\n";

std::string groupRow(const FleetGroup& group, const std::string& folder) {
    const Histogram& start = group.firstFrameMs;
    const double hours = group.standingHours;
    std::string row = "<tr><th scope=\"row\">" + escaped(group.name) + "</th>";
    row += cell(text("%" PRIu64, group.sessions));
    row += known(group.hours > 0, number(group.hours));
    row += known(group.judged > 0, group.judged > 0 ? stutterText(group) : "");
    row += known(hours > 0, number(group.standingMs / 1000 / hours) + "&nbsp;s, " +
                                    number(group.standings / hours) + "&nbsp;stalls" +
                                    standingSpread(group.standingPerMille));
    row += causeCell("", group.stoodMsByCause);
    row += known(start.count() > 0,
                 text("%" PRId64 ", %" PRId64 ", %" PRId64, start.percentile(0.5),
                      start.percentile(0.9), start.percentile(0.99)) +
                         startupSpread(start));
    const double lostHours = group.neverShownHours;
    row += causeCell(lostHours > 0 ? number(group.neverShown / lostHours) : "", group.lostByCause);
    row += cell(text("%" PRIu64, group.errors));
    row += known(
            group.worstStoodMs > 0,
            sessionLink(group.worstSession, folder, number(group.worstStoodMs / 1000) + "&nbsp;s"));
    return row + "</tr>\n";
}

std::string groupingTable(const FleetGrouping& grouping, const std::string& folder) {
    std::string names;
    for (const std::string& name : grouping.names) names += (names.empty() ? "" : ", ") + name;
    const std::string title = escaped("By " + names);
    std::string html = "<section><h2>" + title +
                       "</h2>\n<div class=\"fleet\" tabindex=\"0\" role=\"region\" aria-label=\"" +
                       title + "\"><table><thead><tr><th scope=\"col\">" + escaped(names) +
                       "</th>" + kGroupHead;
    for (const FleetGroup& group : grouping.groups) html += groupRow(group, folder);
    return html + "</tbody></table></div></section>\n";
}

std::string worstTable(const FleetFigures& figures, const std::string& folder) {
    if (figures.worst.empty()) return "";
    std::string html =
            "<section><h2>Worst sessions</h2>\n<div class=\"fleet\" tabindex=\"0\" role=\"region\" "
            "aria-label=\"Worst sessions\"><table><thead><tr><th scope=\"col\" "
            "class=\"number\">in stalls</th>"
            "<th scope=\"col\">session</th><th scope=\"col\">codec</th><th scope=\"col\">app</th>"
            "<th scope=\"col\">resolution</th><th scope=\"col\">verdict</th><th "
            "scope=\"col\">log</th></tr></thead><tbody>\n";
    for (const WorstSession& worst : figures.worst) {
        html += "<tr>" + cell(number(worst.stoodMs / 1000) + "&nbsp;s") + "<td>" +
                sessionLink(worst.id, folder, text("%" PRId64, worst.id)) + "</td>";
        for (const std::string* value : {&worst.codec, &worst.app, &worst.resolution}) {
            html += "<td>" + (value->empty() ? "–" : escaped(*value)) + "</td>";
        }
        html += "<td class=\"sentence\">" + escaped(worst.sentence) + "</td><td>" +
                escaped(worst.log) + "</td></tr>\n";
    }
    return html + "</tbody></table></div></section>\n";
}

}  // namespace

std::set<int64_t> sessionsOfPage(const FleetFigures& figures) {
    std::set<int64_t> ids;
    for (const WorstSession& worst : figures.worst) ids.insert(worst.id);
    for (const FleetGrouping& grouping : figures.groupings) {
        for (const FleetGroup& group : grouping.groups) {
            if (group.worstSession != 0) ids.insert(group.worstSession);
        }
    }
    return ids;
}

std::string fleetPage(const FleetFigures& figures, const std::string& title,
                      const std::string& folder) {
    FleetGrouping all = {{"all"}, {figures.all}};
    all.groups[0].name = "all sessions";
    std::string body = groupingTable(all, folder);
    body.replace(body.find("By all"), 6, "All sessions");
    for (const FleetGrouping& grouping : figures.groupings) body += groupingTable(grouping, folder);
    body += worstTable(figures, folder);
    const std::string summary =
            text("%" PRIu64 " video sessions of %" PRIu64 " logs, %s hours of playback; %" PRIu64
                 " sessions could not be judged",
                 figures.all.sessions, figures.logs, number(figures.all.hours).c_str(),
                 figures.all.sessions - figures.all.judged);
    // Marks stand in this order, so that nothing is looked for in what was filled in.
    const std::pair<std::string_view, std::string> parts[] = {
            {"@TITLE@", escaped(title)},
            {"@PAGE_CSS@", std::string(resources::pageCss())},
            {"@TITLE@", escaped(title)},
            {"@SUMMARY@", summary},
            {"@BODY@", body},
    };
    std::string page;
    std::string_view rest = resources::fleetHtml();
    for (const auto& [mark, filling] : parts) {
        const size_t at = rest.find(mark);
        page.append(rest.substr(0, at)).append(filling);
        rest.remove_prefix(at + mark.size());
    }
    return page.append(rest);
}

}  // namespace android::codecreport

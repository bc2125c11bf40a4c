// SPDX-License-Identifier: Apache-2.0
#include <filesystem>

#include "fleet/FleetCommands.h"
#include "fleet/FleetPage.h"
#include "output/HtmlPage.h"
#include "output/OutputFile.h"

namespace android::codecreport {

namespace {

std::vector<std::string> namesOf(const std::string& list) {
    std::vector<std::string> names;
    for (size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = list.find(',', begin);
        names.push_back(list.substr(begin, end - begin));
    }
    return names;
}

/** The pages that the fleet's page leads to, each as ID.html. */
bool writeSessionPages(const FleetFigures& figures, const std::string& folder, Database* database,
                       std::string* error) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        *error = folder + ": " + failure.message();
        return false;
    }
    const Reference reference;
    for (const int64_t id : sessionsOfPage(figures)) {
        const auto report = database->reportOf(id);
        if (!report) {
            *error = database->error();
            return false;
        }
        const std::string path = folder + "/" + std::to_string(id) + ".html";
        if (!writeOutput(path, htmlPage(*report, reference), error)) return false;
    }
    return true;
}

}  // namespace

int fleetPageCommand(const std::vector<std::string>& operands, const Options& options) {
    Database database;
    if (!openDatabase(operands[0], &database)) return BAD_INPUT;
    std::vector<std::vector<std::string>> groupings;
    for (const std::string& list : options.fleet.by) groupings.push_back(namesOf(list));
    if (groupings.empty()) groupings = usualGroupings(&database);
    std::string error;
    const auto figures = fleetFigures(&database, groupings, &error);
    if (!figures) {
        say(error);
        return BAD_INPUT;
    }
    const std::filesystem::path page(options.page);
    // A page on standard output has no folder beside it.
    std::string folder;
    if (options.page != "-") folder = page.stem().string() + "-sessions";
    const std::string title = std::filesystem::path(operands[0]).filename().string();
    if ((!folder.empty() &&
         !writeSessionPages(*figures, (page.parent_path() / folder).string(), &database, &error)) ||
        !writeOutput(options.page, fleetPage(*figures, title, folder), &error)) {
        say(error);
        return BAD_OUTPUT;
    }
    return OK;
}

}  // namespace android::codecreport

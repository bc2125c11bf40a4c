// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/** Files that are built into the program. */
namespace android::codecreport::resources {

std::string_view analysisFields();
std::string_view analyticsLines();
std::string_view causes();
std::string_view debugMask();
std::string_view fields();
std::string_view history();
std::string_view loggerLines();
std::string_view metrics();
std::string_view reportJson();
std::string_view reportKeys();
std::string_view serviceLines();
std::string_view settings();
std::string_view statusLines();
std::string_view verdicts();

std::string_view fleetHtml();
std::string_view pageHtml();
std::string_view pageCss();
std::string_view pageJs();
std::string_view plotCss();
std::string_view plotLicense();

}  // namespace android::codecreport::resources

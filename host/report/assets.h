// The files of the page that hold no data of a session: embedded at build time by assets.cmake.
#pragma once

#include <string_view>

namespace vornel::report {

std::string_view PageAsset();          // assets/page.html, with places to fill: {{body}} and others
std::string_view StyleAsset();         // assets/report.css
std::string_view ScriptAsset();        // assets/report.js
std::string_view ChartStyleAsset();    // of the chart library, third_party/uplot
std::string_view ChartScriptAsset();   // likewise
std::string_view ChartLicenceAsset();  // likewise

}  // namespace vornel::report

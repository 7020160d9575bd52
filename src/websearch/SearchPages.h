// The two search pages, compiled in from websearch/pages/*.html, with the
// values the library puts into them.
//
// Provides: iconSearchPage(), imageSearchPage(), describeMessageBody(),
// messageBodyType().
// Values go in verbatim, unescaped: the page text is the library's own and
// the values are its own identifier and configuration. Pure; any thread.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace velmora {

// The icon page, the licence key between the quotes of LICENSE_KEY and
// `apiBase` (the service base URL and "/v2/icons") as API_BASE.
std::string iconSearchPage(const std::string& licenseKey, const std::string& apiBase);
// The photo page, searching below `serviceBase`.
std::string imageSearchPage(const std::string& serviceBase);

// A message body as the platform's collections print themselves:
// "{\n    id = 12;\n    provider = lineart;\n}", "1", "(\n    a\n)".
std::string describeMessageBody(const nlohmann::json& body);
// The platform's name for the body's class: "__NSDictionaryM", "__NSCFString", ...
std::string messageBodyType(const nlohmann::json& body);

}  // namespace velmora

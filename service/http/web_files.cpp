#include "service/http/web_files.h"

#include <algorithm>

#include "web_content.h"  // made from service/web/ and dygraphs

namespace fieldline::service {
namespace {

constexpr std::string_view kHtml = "text/html; charset=utf-8";
constexpr std::string_view kScript = "text/javascript; charset=utf-8";
constexpr std::string_view kStyle = "text/css; charset=utf-8";

constexpr WebFile kFiles[] = {
    {"/",            kHtml,           web::kIndexHtml,  false},
    {"/app.js",      kScript,         web::kAppJs,      false},
    {"/dygraph.js",  kScript,         web::kDygraphJs,  false},
    {"/dygraph.css", kStyle,          web::kDygraphCss, false},
    {"/login",       kHtml,           web::kLoginHtml,  true },
    {"/login.js",    kScript,         web::kLoginJs,    true },
    {"/style.css",   kStyle,          web::kStyleCss,   true },
    {"/icon.svg",    "image/svg+xml", web::kIconSvg,    true },
};

}  // namespace

std::span<const WebFile> WebFiles() { return kFiles; }

const WebFile* FindWebFile(std::string_view path) {
  const auto* const found = std::ranges::find(kFiles, path, &WebFile::path);
  return found != std::end(kFiles) ? found : nullptr;
}

}  // namespace fieldline::service

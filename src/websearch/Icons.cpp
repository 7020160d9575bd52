#include "websearch/Icons.h"

#include <nlohmann/json.hpp>

#include "bridge/Exports.h"
#include "bridge/HardwareUUID.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Text.h"
#include "ui/Images.h"
#include "websearch/SearchPages.h"

namespace velmora {

namespace {

using namespace ui;

constexpr const char* quotaExhaustedCode = "DOWNLOAD_QUOTA_EXHAUSTED";
constexpr Color accent = colors::subtleRed;
constexpr Color selectedLabel = Color::rgb255(236, 91, 91);

bool isWebAddress(const std::string& base) { return base.rfind("http://", 0) == 0 || base.rfind("https://", 0) == 0; }

std::string withQuery(std::string url, std::initializer_list<std::pair<const char*, std::string>> items) {
    char separator = '?';
    for (const auto& [key, value] : items) {
        url += separator;
        url += key;
        url += '=';
        url += support::percentEncoded(value, support::PercentSet::queryItem);
        separator = '&';
    }
    return url;
}

// The envelope's code and message, or nothing when the body holds none.
std::optional<std::pair<std::string, std::string>> errorEnvelope(const nlohmann::json& body, const char* noMessage) {
    if (!body.is_object()) return std::nullopt;
    auto error = body.find("error");
    if (error == body.end() || !error->is_object()) return std::nullopt;
    auto text = [&](const char* key, const char* fallback) {
        auto it = error->find(key);
        return it != error->end() && it->is_string() ? it->get<std::string>() : std::string(fallback);
    };
    return std::make_pair(text("code", "UNKNOWN"), text("message", noMessage));
}

// A whole number, as the platform reads one out of a JSON number.
std::optional<long long> wholeNumber(const nlohmann::json& object, const char* key) {
    auto it = object.find(key);
    if (it == object.end()) return std::nullopt;
    if (it->is_number_integer()) return it->get<long long>();
    if (it->is_number_float()) {
        const double value = it->get<double>();
        if (value == static_cast<double>(static_cast<long long>(value))) return static_cast<long long>(value);
    }
    return std::nullopt;
}

void setOnMain(support::Published<bool>& value, bool state) {
    platform::mainAsync([&value, state] { value.set(state); });
}

}  // namespace

const char* iconStyleName(IconStyle style) {
    switch (style) {
        case IconStyle::normal: return "Normal";
        case IconStyle::fill: return "Fill";
        case IconStyle::outline: return "Outline";
    }
    return "Normal";
}

std::atomic<IconStyle>& currentIconStyle() {
    static auto* style = new std::atomic<IconStyle>(IconStyle::normal);
    return *style;
}

std::string iconApiBase() { return platform::config().serviceBaseURL() + "/v2/icons"; }

std::string iconCacheFolder() { return platform::files().applicationSupportDirectory() + "/Microsoft/Velmora/User/Icons"; }

std::optional<std::string> assetURL(const std::string& licenseKey, const std::string& provider, const std::string& iconId) {
    const std::string base = iconApiBase();
    if (!isWebAddress(base)) return std::nullopt;
    return withQuery(base + "/asset", {{"licenseKey", licenseKey}, {"provider", provider}, {"iconId", iconId}, {"color", "000000"}});
}

std::optional<std::string> quotaURL(const std::string& licenseKey) {
    const std::string base = iconApiBase();
    if (!isWebAddress(base)) return std::nullopt;
    return withQuery(base + "/quota", {{"licenseKey", licenseKey}});
}

IconViewModel& IconViewModel::shared() {
    // Never destroyed: worker completions may reach it at exit.
    static auto* model = [] {
        auto* made = new IconViewModel;
        platform::registerInspector("icons", [made] {
            return std::vector<std::string>{
                "icons: style " + std::string(iconStyleName(currentIconStyle().load())) + ", remaining " +
                    support::quoted(made->remainingDownloadsText.get()) +
                    (made->exhaustedVisible.get() ? ", quota note shown" : ", no quota note") +
                    (made->isDownloading.get() ? ", downloading" : "")};
        });
        return made;
    }();
    return *model;
}

// --- messages, download, quota ------------------------------------------------------------

void IconCoordinator::userContentController(const std::string& name, const std::string& bodyJson) {
    const auto body = nlohmann::json::parse(bodyJson, nullptr, false);
    platform::print("Received message: " + name + " with body: " + describeMessageBody(body) +
                    " of type: " + messageBodyType(body));
    if (name == "iconClicked") {
        const bool ok = body.is_object() && body.contains("provider") && body["provider"].is_string() &&
                        body.contains("id") && body["id"].is_string();
        if (!ok) {
            platform::print("Icon clicked: unexpected message body " + describeMessageBody(body));
            return;
        }
        const std::string provider = body["provider"], id = body["id"];
        platform::print("Icon clicked with provider: " + provider + ", id: " + id);
        downloadAndInsertIcon(provider, id);
    } else if (name == "quotaExhausted") {
        setOnMain(IconViewModel::shared().exhaustedVisible, true);
    }
}

void finishIconDownload() { setOnMain(IconViewModel::shared().isDownloading, false); }

void triggerInsertIconSvgIntoPowerPoint(const std::string& filePath, const std::string& currentStyle) {
    const auto slash = filePath.find_last_of('/');
    runInsertIconWithArguments({slash == std::string::npos ? filePath : filePath.substr(slash + 1), currentStyle});
}

void downloadAndInsertIcon(const std::string& provider, const std::string& iconId) {
    platform::print("Download Event Triggered for provider: " + provider + ", iconId: " + iconId);
    const std::string folder = iconCacheFolder();
    if (!platform::files().isDirectory(folder)) {
        std::string error;
        if (!platform::files().createDirectories(folder, &error)) {
            platform::print("Error creating directory: " + error);
            return;
        }
        platform::print("Created directory at: " + folder);
    }
    setOnMain(IconViewModel::shared().isDownloading, true);

    // The name joins the two texts as they are, so "/" in either reaches
    // into a folder that does not exist, and the write fails.
    const std::string file = folder + "/" + provider + "-" + iconId + ".svg";
    if (platform::files().exists(file)) {
        platform::print("SVG already exists locally. Inserting from local file.");
        triggerInsertIconSvgIntoPowerPoint(file, iconStyleName(currentIconStyle().load()));
        finishIconDownload();
        return;
    }
    const auto url = assetURL(globalHardwareUUID(), provider, iconId);
    if (!url) {
        platform::nslog("Icon Download: Invalid asset URL");
        finishIconDownload();
        return;
    }
    platform::http().send({"GET", *url, {}, {}, 60}, [file](platform::HttpResponse response) {
        if (response.transportError) {
            platform::nslog("Icon Download: Error downloading icon: " + *response.transportError);
        } else if (response.status == 0) {
            platform::nslog("Icon Download: No data returned from asset endpoint");
        } else if (response.status == 200) {
            std::string error;
            if (!platform::files().write(file, response.body, true, &error)) {
                platform::nslog("Icon Download: Error writing SVG file: " + error);
            } else {
                platform::nslog("Icon Download: SVG saved at " + file);
                // Blocks this worker until the host returns: the overlay stays up meanwhile.
                triggerInsertIconSvgIntoPowerPoint(file, iconStyleName(currentIconStyle().load()));
                updateRemainingDownloads([](std::string text, bool exhausted) {
                    auto& model = IconViewModel::shared();
                    model.remainingDownloadsText.set(std::move(text));
                    model.exhaustedVisible.set(exhausted);
                });
            }
        } else {
            const auto body = nlohmann::json::parse(response.body, nullptr, false);
            if (auto error = errorEnvelope(body, "")) {
                platform::nslog("Icon Download: " + error->first + " - " + error->second);
                if (error->first == quotaExhaustedCode) setOnMain(IconViewModel::shared().exhaustedVisible, true);
            } else {
                platform::nslog("Icon Download: HTTP " + std::to_string(response.status) + " from asset endpoint");
            }
        }
        finishIconDownload();
    });
}

void updateRemainingDownloads(std::function<void(std::string text, bool exhausted)> completion) {
    auto finish = [completion](std::string text, bool exhausted) {
        platform::mainAsync([completion, text = std::move(text), exhausted] { completion(text, exhausted); });
    };
    const auto url = quotaURL(globalHardwareUUID());
    if (!url) {
        platform::nslog("Icon Quota: Error: Invalid URL");
        finish("Error: Invalid URL", false);
        return;
    }
    // The status is not looked at: the body alone decides.
    platform::http().send({"GET", *url, {}, {}, 60}, [finish](platform::HttpResponse response) {
        if (response.transportError) {
            platform::nslog("Icon Quota: Error fetching quota: " + *response.transportError);
            finish("Unable to fetch remaining downloads.", false);
            return;
        }
        if (response.status == 0) {
            finish("No data returned.", false);
            return;
        }
        const auto body = nlohmann::json::parse(response.body, nullptr, false);
        if (!body.is_object()) {
            finish("Error: Unable to parse JSON", false);
            return;
        }
        const auto limit = wholeNumber(body, "limit"), remaining = wholeNumber(body, "remaining");
        if (limit && remaining) {
            finish(std::to_string(*remaining) + "/" + std::to_string(*limit) + " remaining for month", *remaining < 1);
        } else if (auto error = errorEnvelope(body, "Unknown error")) {
            platform::nslog("Icon Quota: " + error->first + " - " + error->second);
            finish("Unable to fetch remaining downloads.", error->first == quotaExhaustedCode);
        } else {
            finish("Error: Unexpected response structure", false);
        }
    });
}

// --- the pane -------------------------------------------------------------------------------------

IconTaskPane::IconTaskPane() : webView_(platform::web().makeWebView()) {
    for (const char* name : {"iconClicked", "quotaExhausted"}) {
        webView_->addMessageHandler(name, [name = std::string(name)](const std::string& body) {
            platform::guarded("icon page message", [&] { IconCoordinator::userContentController(name, body); });
        });
    }
    webView_->loadHTMLString(iconSearchPage(globalHardwareUUID(), iconApiBase()), "");
}

void IconTaskPane::redraw() {
    if (auto view = view_.lock()) view->invalidate();
}

Node IconTaskPane::toggleButton(IconStyle style, double scale) {
    const bool isSelected = selectedStyle == style;
    const std::string imageName = iconStyleName(style);
    const std::string svg = std::string(iconPath) + imageName + ".svg", png = std::string(iconPath) + imageName + ".png";
    Node picture = canLoadImage(svg)   ? image(svg).makeResizable()
                   : canLoadImage(png) ? image(png).makeResizable()
                                       : symbol("questionmark.square").font(30 * scale);
    std::weak_ptr<IconTaskPane> weak = weak_from_this();
    return button(vstack(Alignment::center, 5 * scale,
                         {std::move(picture).frame(30 * scale, 30 * scale),
                          text(imageName)
                              .font(12 * scale, isSelected ? FontWeight::bold : FontWeight::regular)
                              .foregroundColor(isSelected ? selectedLabel : colors::black)})
                      .padding(5 * scale)
                      .frame(60 * scale, 70 * scale)
                      .background(colors::white)
                      .border(isSelected ? accent : colors::white, 1)
                      .cornerRadius(10 * scale)
                      .shadow(isSelected ? accent : colors::gray.opacity(0.5), 3, 0, 2),
                  [weak, style] {
                      if (auto self = weak.lock()) {
                          self->selectedStyle = style;
                          currentIconStyle().store(style);
                          self->redraw();
                      }
                  })
        .accessibilityId(imageName);
}

Node IconTaskPane::body(double width) {
    const double scale = width / 250.0;
    auto& model = IconViewModel::shared();
    Nodes rows{text("Style").font(14, FontWeight::semibold),
               text("Styling of icon when inserted").font(12).foregroundColor(colors::gray),
               hstack(Alignment::center, 5,
                      {toggleButton(IconStyle::normal, scale), toggleButton(IconStyle::fill, scale),
                       toggleButton(IconStyle::outline, scale)}),
               hstack({text("Icon Search:").font(14, FontWeight::semibold), spacer(),
                       text(model.remainingDownloadsText.get()).font(12).foregroundColor(colors::gray)})};
    if (model.exhaustedVisible.get()) {
        rows.push_back(vstack(Alignment::center, 10,
                              {text("You used up all your Icon Downloads this month. The downloads will reset on the "
                                    "1st of the next month.")
                                   .font(14)
                                   .foregroundColor(accent)})
                           .padding(10)
                           .background(colors::white.opacity(0.9))
                           .cornerRadius(5));
    }
    rows.push_back(ui::webView(webView_).border(colors::white, 1));
    Frame fill;
    fill.maxWidth = infinity;
    fill.maxHeight = infinity;
    fill.alignment = Alignment::topLeading;
    Nodes layers{vstack(Alignment::leading, 10, std::move(rows)).padding(5).frame(fill).onAppearDo([] {
        updateRemainingDownloads([](std::string text, bool exhausted) {
            auto& shared = IconViewModel::shared();
            shared.remainingDownloadsText.set(std::move(text));
            shared.exhaustedVisible.set(exhausted);
        });
    })};
    if (model.isDownloading.get()) {
        layers.push_back(zstack({rectangle().foregroundColor(colors::black.opacity(0.4)),
                                 text("Downloading Icon...").padding(defaultPadding).background(colors::white).cornerRadius(10)}));
    }
    return zstack(std::move(layers));
}

void IconContentManager::loadIconView(ContentCompletion completion) {
    auto pane = std::make_shared<IconTaskPane>();
    auto hosting = ui::HostingView::make([pane](double width) { return pane->body(width); });
    pane->attach(hosting);
    auto& model = IconViewModel::shared();
    ui::invalidateOnChange(hosting, model.isDownloading);
    ui::invalidateOnChange(hosting, model.remainingDownloadsText);
    ui::invalidateOnChange(hosting, model.exhaustedVisible);
    completion(hosting);
}

// Called by the macro project on the main thread.
void openIconTaskpane() {
    platform::nslog("Icon: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Icons", 250, IconContentManager::loadIconView);
}

}  // namespace velmora

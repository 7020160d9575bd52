#include "websearch/Images.h"

#include <nlohmann/json.hpp>

#include "bridge/Exports.h"
#include "bridge/MacroRunner.h"
#include "platform/Platform.h"
#include "support/Text.h"
#include "websearch/SearchPages.h"

namespace velmora {

namespace {

using namespace ui;

bool textAt(const nlohmann::json& body, const char* key) {
    auto it = body.find(key);
    return it != body.end() && it->is_string();
}

}  // namespace

ImageViewModel& ImageViewModel::shared() {
    // Never destroyed, like the other process-wide view models.
    static auto* model = new ImageViewModel;
    return *model;
}

void ImageCoordinator::userContentController(const std::string& name, const std::string& bodyJson) {
    const auto body = nlohmann::json::parse(bodyJson, nullptr, false);
    platform::nslog("IMAGES: 🌐 JS message received: " + name + " – body: " + describeMessageBody(body));
    if (name != "downloadImage" || !body.is_object() || !textAt(body, "command") || body["command"] != "downloadImage" ||
        !textAt(body, "imageUrl") || !textAt(body, "downloadLocation")) {
        return;
    }
    const std::string imageUrl = body["imageUrl"], location = body["downloadLocation"];
    platform::nslog("IMAGES: ✅ downloadImage payload → imageUrl: " + imageUrl + ", downloadLocation: " + location);
    images::downloadAndInsertIcon(imageUrl, location);
}

std::optional<std::string> trackDownloadURL(const std::string& downloadLocation) {
    const std::string base = platform::config().serviceBaseURL();
    if (base.rfind("http://", 0) != 0 && base.rfind("https://", 0) != 0) return std::nullopt;
    return base + "/get_trackDownload?downloadLocation=" +
           support::percentEncoded(downloadLocation, support::PercentSet::query);
}

void images::downloadAndInsertIcon(const std::string& imageUrl, const std::string& downloadLocation) {
    platform::print("🔽 Download Event Triggered for imageURL: " + imageUrl);
    const auto url = trackDownloadURL(downloadLocation);
    if (!url) {
        platform::print("❌ Invalid downloadLocation encoding");
        return;
    }
    platform::http().send({"GET", *url, {}, {}, 60}, [imageUrl](platform::HttpResponse response) {
        if (response.transportError) {
            platform::print("Download tracking failed: " + *response.transportError);
        } else {
            platform::print("Download tracking response: " + std::to_string(response.status));
        }
        platform::mainAsync([imageUrl] { triggerInsertImageIntoPowerPoint(imageUrl); });
    });
}

void triggerInsertImageIntoPowerPoint(const std::string& imageUrl) { runInsertImageWithArguments({imageUrl}); }

// --- the pane ----------------------------------------------------------------------------

ImageTaskPane::ImageTaskPane() : webView_(platform::web().makeWebView()) {
    onDownload = [](const std::string& url, const std::string& location) {
        platform::print("JS asked to download: " + url + " → " + location);
    };
    webView_->addMessageHandler("downloadImage", [](const std::string& body) {
        platform::guarded("photo page message", [&] { ImageCoordinator::userContentController("downloadImage", body); });
    });
    webView_->loadHTMLString(imageSearchPage(platform::config().serviceBaseURL()), "");
}

Node ImageTaskPane::body(double) const {
    Frame fill;
    fill.maxWidth = infinity;
    fill.maxHeight = infinity;
    fill.alignment = Alignment::topLeading;
    Nodes layers{vstack(Alignment::leading, 10, {ui::webView(webView_).border(colors::white, 1)})
                     .padding(Edge::top, 5)
                     .frame(fill)};
    if (ImageViewModel::shared().isDownloading.get()) {
        layers.push_back(zstack({rectangle().foregroundColor(colors::black.opacity(0.4)),
                                 hstack(Alignment::center, 8, {symbol("progress.indicator"), text("Downloading Image...")})
                                     .padding(defaultPadding)
                                     .background(colors::white)
                                     .cornerRadius(10)}));
    }
    return zstack(std::move(layers));
}

void ImageContentManager::loadImageView(ContentCompletion completion) {
    auto pane = std::make_shared<ImageTaskPane>();
    auto hosting = ui::HostingView::make([pane](double width) { return pane->body(width); });
    ui::invalidateOnChange(hosting, ImageViewModel::shared().isDownloading);
    completion(hosting);
}

// Called by the macro project on the main thread.
void openImageTaskpane() {
    platform::nslog("Icon: 🟢 Dylib loaded successfully");
    TaskpaneManager::toggleTaskpane("Images", 250, ImageContentManager::loadImageView);
}

}  // namespace velmora

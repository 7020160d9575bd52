// The photo pane: the search page in a web view; a click on a photo reports
// the download to the cloud service and hands the photo's address to the
// macro project, which fetches and inserts it.
//
// Provides: ImageViewModel, ImageCoordinator, images::downloadAndInsertIcon(),
// triggerInsertImageIntoPowerPoint(), trackDownloadURL(), ImageTaskPane,
// ImageContentManager.
// The report's completion runs on an HTTP worker; the insertion runs on the
// main thread and blocks it while the host works.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Web.h"
#include "support/Published.h"
#include "taskpane/TaskpaneManager.h"
#include "ui/HostingView.h"
#include "ui/Node.h"

namespace velmora {

class ImageViewModel {
public:
    static ImageViewModel& shared();
    // In place for a busy overlay; nothing in the flow sets it.
    support::Published<bool> isDownloading{false};

private:
    ImageViewModel() = default;
};

// Only "downloadImage" with the command "downloadImage" and both addresses
// as texts goes on; anything else is dropped after the first line. Main thread.
class ImageCoordinator {
public:
    static void userContentController(const std::string& name, const std::string& bodyJson);
};

// The service's "/get_trackDownload" with the location encoded as the
// platform's URL-query set does, which leaves "&", "=" and "?" as they are:
// a query inside the location runs on into the outer one.
std::optional<std::string> trackDownloadURL(const std::string& downloadLocation);

namespace images {
// Named after the icon pane's function, as it has always been; nothing is
// downloaded here. The insertion waits for the report, not for its success.
void downloadAndInsertIcon(const std::string& imageUrl, const std::string& downloadLocation);
}  // namespace images

void triggerInsertImageIntoPowerPoint(const std::string& imageUrl);

class ImageTaskPane {
public:
    ImageTaskPane();
    ui::Node body(double width) const;
    const std::shared_ptr<platform::WebView>& webView() const { return webView_; }

    // Passed to the page's container and never called by it.
    std::function<void(const std::string&, const std::string&)> onDownload;

private:
    std::shared_ptr<platform::WebView> webView_;
};

class ImageContentManager {
public:
    static void loadImageView(ContentCompletion completion);
};

}  // namespace velmora

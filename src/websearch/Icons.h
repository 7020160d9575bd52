// The icon pane: the search page in a web view, the insertion style, the
// downloads left this month, and the download of a clicked icon into the
// user's icon cache before the macro project inserts it.
//
// Provides: IconStyle, iconStyleName(), currentIconStyle(), iconApiBase(),
// iconCacheFolder(), IconViewModel, IconCoordinator, downloadAndInsertIcon(),
// finishIconDownload(), triggerInsertIconSvgIntoPowerPoint(),
// updateRemainingDownloads(), assetURL(), quotaURL(), IconTaskPane,
// IconContentManager.
// Downloads run on the HTTP port's workers; every published change goes
// through the main queue. Nothing guards overlapping downloads: the busy
// overlay alone holds the user off.
#pragma once

#include <atomic>
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

enum class IconStyle { normal, fill, outline };

// "Normal", "Fill", "Outline".
const char* iconStyleName(IconStyle style);

// The style icons are inserted in; read at insertion, written on the main thread.
std::atomic<IconStyle>& currentIconStyle();

// The service base URL and "/v2/icons".
std::string iconApiBase();
// Below the user's application support directory; one file per icon,
// "<provider>-<iconId>.svg", whatever the style.
std::string iconCacheFolder();

// The two calls, keys in order, each value encoded as a URL builder
// encodes one; nothing when the base is not a web address.
std::optional<std::string> assetURL(const std::string& licenseKey, const std::string& provider, const std::string& iconId);
std::optional<std::string> quotaURL(const std::string& licenseKey);

class IconViewModel {
public:
    static IconViewModel& shared();

    support::Published<bool> isDownloading{false};
    support::Published<std::string> remainingDownloadsText{"Loading"};
    support::Published<bool> exhaustedVisible{false};

private:
    IconViewModel() = default;
};

// The page's messages: "iconClicked" downloads and inserts, "quotaExhausted"
// raises the note; anything else is ignored. Main thread.
class IconCoordinator {
public:
    static void userContentController(const std::string& name, const std::string& bodyJson);
};

// Main thread. A cached icon goes in at once; otherwise it is fetched,
// saved atomically, inserted and the quota refreshed.
void downloadAndInsertIcon(const std::string& provider, const std::string& iconId);
void finishIconDownload();
// Sends the file's name alone, not its path.
void triggerInsertIconSvgIntoPowerPoint(const std::string& filePath, const std::string& currentStyle);
// The completion runs exactly once, on the main queue, with the text for
// the pane and whether the month's downloads are used up.
void updateRemainingDownloads(std::function<void(std::string text, bool exhausted)> completion);

// The pane: style toggles scaled to its width, the downloads left, the
// quota note, the page, and the busy overlay.
class IconTaskPane : public std::enable_shared_from_this<IconTaskPane> {
public:
    static constexpr const char* iconPath = "/Library/Application Support/Microsoft/Velmora/PowerPoint/Icons/";

    IconTaskPane();
    ui::Node body(double width);
    void attach(const std::weak_ptr<ui::HostingView>& view) { view_ = view; }

    IconStyle selectedStyle = IconStyle::normal;
    const std::shared_ptr<platform::WebView>& webView() const { return webView_; }

private:
    ui::Node toggleButton(IconStyle style, double scale);
    void redraw();

    std::shared_ptr<platform::WebView> webView_;
    std::weak_ptr<ui::HostingView> view_;
};

class IconContentManager {
public:
    static void loadIconView(ContentCompletion completion);
};

}  // namespace velmora

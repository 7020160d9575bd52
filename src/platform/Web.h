// Web port: a web view that loads an HTML text and receives named messages.
//
// Provides: WebView, WebPort. Used on the main thread only; message handlers
// run on the main thread with the message body as JSON text.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace velmora::platform {

class WebView {
public:
    virtual ~WebView() = default;
    virtual void addMessageHandler(const std::string& name, std::function<void(const std::string& bodyJson)> handler) = 0;
    virtual void loadHTMLString(const std::string& html, const std::string& baseURL) = 0;
    virtual void evaluateJavaScript(const std::string& script) = 0;
    // The page as last loaded, for hosts that draw panes as HTML; a host
    // with a real engine draws the view itself and gives nothing.
    virtual std::string loadedHTML() const { return {}; }
};

class WebPort {
public:
    virtual ~WebPort() = default;
    virtual std::shared_ptr<WebView> makeWebView() = 0;
};

}  // namespace velmora::platform

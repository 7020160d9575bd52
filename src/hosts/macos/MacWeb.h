// Web port on macOS: WKWebView with script message handlers.
//
// Provides: MacWebView, MacWeb. A message's body reaches its handler as JSON
// text (a body that JSON cannot hold arrives as "null"). The renderer
// places the web view itself (webView()). Main thread only.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/Web.h"

#ifdef __OBJC__
@class WKWebView;
@class VLScriptMessageHandler;
#endif

namespace velmora::hosts::macos {

class MacWebView : public platform::WebView {
public:
    MacWebView();
    void addMessageHandler(const std::string& name, std::function<void(const std::string& bodyJson)> handler) override;
    void loadHTMLString(const std::string& html, const std::string& baseURL) override;
    void evaluateJavaScript(const std::string& script) override;

#ifdef __OBJC__
    WKWebView* webView() const { return view_; }

private:
    WKWebView* view_;
    VLScriptMessageHandler* handler_;
#endif
};

class MacWeb : public platform::WebPort {
public:
    std::shared_ptr<platform::WebView> makeWebView() override { return std::make_shared<MacWebView>(); }
};

}  // namespace velmora::hosts::macos

// Recording web views: the web port for hosts without a browser engine.
//
// Provides: MemoryWebView, MemoryWeb.
// A view keeps the last page it loaded and every script it was asked to run;
// the host posts messages to its handlers as a page would.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Web.h"

namespace velmora::hosts {

class MemoryWebView : public platform::WebView {
public:
    void addMessageHandler(const std::string& name, std::function<void(const std::string&)> handler) override {
        handlers_[name] = std::move(handler);
    }
    void loadHTMLString(const std::string& html, const std::string& baseURL) override {
        html_ = html;
        baseURL_ = baseURL;
        ++loads_;
    }
    void evaluateJavaScript(const std::string& script) override { scripts_.push_back(script); }

    // Delivers a message as the page's script would; false if no handler has that name.
    bool post(const std::string& name, const std::string& bodyJson) {
        auto it = handlers_.find(name);
        if (it == handlers_.end()) return false;
        it->second(bodyJson);
        return true;
    }
    const std::string& html() const { return html_; }
    std::string loadedHTML() const override { return html_; }
    const std::string& baseURL() const { return baseURL_; }
    int loads() const { return loads_; }
    const std::vector<std::string>& scripts() const { return scripts_; }

private:
    std::map<std::string, std::function<void(const std::string&)>> handlers_;
    std::string html_, baseURL_;
    int loads_ = 0;
    std::vector<std::string> scripts_;
};

class MemoryWeb : public platform::WebPort {
public:
    std::shared_ptr<platform::WebView> makeWebView() override {
        auto view = std::make_shared<MemoryWebView>();
        views_.push_back(view);
        return view;
    }
    const std::vector<std::shared_ptr<MemoryWebView>>& views() const { return views_; }

private:
    std::vector<std::shared_ptr<MemoryWebView>> views_;
};

}  // namespace velmora::hosts

// In-memory windows and views: the views port for hosts that draw nothing.
//
// Provides: MemoryView, MemoryWindow, MemoryViews.
// The Linux host simulator builds its document window from these, and the
// tests build theirs. A text field is a MemoryView with a string value.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Views.h"

namespace velmora::hosts {

class MemoryView : public platform::View {
public:
    explicit MemoryView(std::string className, platform::Rect frame = {},
                        std::optional<std::string> textValue = std::nullopt)
        : View(frame), className_(std::move(className)), textValue_(std::move(textValue)) {}

    std::string className() const override { return className_; }
    std::optional<std::string> textFieldValue() const override { return textValue_; }
    void setTextValue(std::optional<std::string> value) { textValue_ = std::move(value); }

private:
    std::string className_;
    std::optional<std::string> textValue_;
};

class MemoryWindow : public platform::Window {
public:
    MemoryWindow(std::string className, std::shared_ptr<platform::View> contentView, bool visible = true)
        : className_(std::move(className)), contentView_(std::move(contentView)), visible_(visible) {}
    std::string className() const override { return className_; }
    std::shared_ptr<platform::View> contentView() const override { return contentView_; }
    bool isVisible() const override { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    void setContentView(std::shared_ptr<platform::View> view) { contentView_ = std::move(view); }

private:
    std::string className_;
    std::shared_ptr<platform::View> contentView_;
    bool visible_;
};

class MemoryViews : public platform::ViewsPort {
public:
    std::shared_ptr<platform::Window> keyWindow() const override { return keyWindow_; }
    std::vector<std::shared_ptr<platform::Window>> windows() const override { return windows_; }
    std::shared_ptr<platform::View> makeView(const std::string& className, const platform::Rect& frame) override {
        return std::make_shared<MemoryView>(className, frame);
    }
    std::shared_ptr<platform::View> makeTextField(const std::string& text) override {
        return std::make_shared<MemoryView>("NSTextField", platform::Rect{}, text);
    }

    void addWindow(std::shared_ptr<platform::Window> window) { windows_.push_back(std::move(window)); }
    void setKeyWindow(std::shared_ptr<platform::Window> window) { keyWindow_ = std::move(window); }

private:
    std::vector<std::shared_ptr<platform::Window>> windows_;
    std::shared_ptr<platform::Window> keyWindow_;
};

}  // namespace velmora::hosts

// triggerMissedAssistant's command name: the first byte picks the modifier
// keys held (the name is looked up against them), the text up to the next
// NUL is the name, and the remainder a second name sent right after it.
// The missed rows then show in the assistant pane.

#include "FuzzPlatform.h"
#include "assistant/AssistantPane.h"
#include "assistant/AssistantViewModel.h"
#include "keyboard/ModifierKeyState.h"

extern "C" void triggerMissedAssistant(const char* missedShortcut);

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    const std::uint8_t held = bytes.take();
    const auto [first, second] = fuzz::splitAtNul(bytes.text);

    fuzz::Session session;
    AssistantViewModel::shared().missed.set({});
    std::uint64_t flags = 0;
    const std::uint64_t keys[] = {ModifierFlags::shift, ModifierFlags::control, ModifierFlags::option,
                                  ModifierFlags::command, ModifierFlags::capsLock, ModifierFlags::function};
    for (std::size_t bit = 0; bit < std::size(keys); ++bit) {
        if (held & (1u << bit)) flags |= keys[bit];
    }
    globalModifierKeyState().modifierFlags.set(ModifierFlags{flags});

    triggerMissedAssistant(first.c_str());
    triggerMissedAssistant(second.c_str());
    session.settle();
    if (AssistantViewModel::shared().missed.get().size() > 3) fuzz::fail("more than three missed rows");

    std::shared_ptr<platform::View> pane;
    AssistantContentManager::loadAssistantView([&](std::shared_ptr<platform::View> view) { pane = std::move(view); });
    session.settle();
    fuzz::look(pane, 250);
    globalModifierKeyState().modifierFlags.set(ModifierFlags{});
    return 0;
}

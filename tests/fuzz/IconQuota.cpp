// The icon service's quota reply (v2/icons/quota): the first byte picks the
// status, which only matters when it is 0; the rest is the body. Every
// reply ends in one text and flag for the icon pane, which shows them.

#include "FuzzPlatform.h"
#include "bridge/HardwareUUID.h"
#include "websearch/Icons.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    static constexpr int statuses[] = {200, 0, 404, 429, 500, 503, 204, 302};
    const int status = statuses[bytes.take() % std::size(statuses)];

    fuzz::Session session;
    setGlobalHardwareUUID("HW-1");
    session.fake.config->service = "https://svc.test/api";
    session.fake.http->route("https://svc.test/api/v2/icons/quota", {status, {}, std::string(bytes.text), std::nullopt});

    int calls = 0;
    std::string shown;
    bool exhausted = false;
    updateRemainingDownloads([&](std::string text, bool used) {
        ++calls;
        shown = std::move(text);
        exhausted = used;
    });
    session.settle();
    if (calls != 1) fuzz::fail("the quota's completion ran " + std::to_string(calls) + " times");
    if (shown.empty()) fuzz::fail("the quota left no text for the pane");

    auto& model = IconViewModel::shared();
    model.remainingDownloadsText.set(shown);
    model.exhaustedVisible.set(exhausted);
    model.isDownloading.set(false);
    auto pane = std::make_shared<IconTaskPane>();
    fuzz::look(pane->body(250));
    return 0;
}

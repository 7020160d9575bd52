// What the icon and photo pages post to the native side: an item of the
// service's search reply as the page hands it on (an icon's provider and
// id, a photo's addresses), or the quota note. The first byte picks the
// message name; the rest is its body, as the page's JSON.

#include "FuzzPlatform.h"
#include "bridge/HardwareUUID.h"
#include "websearch/Icons.h"
#include "websearch/Images.h"
#include "websearch/SearchPages.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    static constexpr const char* names[] = {"iconClicked", "downloadImage", "quotaExhausted", "other"};
    const std::string name = names[bytes.take() % std::size(names)];
    const std::string body(bytes.text);

    // The log's forms of the body, whatever it holds.
    const auto parsed = nlohmann::json::parse(body, nullptr, false);
    (void)describeMessageBody(parsed);
    (void)messageBodyType(parsed);

    fuzz::Session session;
    setGlobalHardwareUUID("HW-1");
    session.fake.config->service = "https://svc.test/api";
    session.fake.http->route("https://svc.test/api/v2/icons/asset", {200, {}, "<svg/>", std::nullopt});
    session.fake.http->route("https://svc.test/api/v2/icons/quota", {200, {}, R"({"limit":50,"remaining":49})", std::nullopt});
    session.fake.http->route("https://svc.test/api/get_trackDownload", {200, {}, R"({"ok":true})", std::nullopt});
    auto& model = IconViewModel::shared();
    model.isDownloading.set(false);
    model.exhaustedVisible.set(false);

    if (name == "downloadImage" || name == "other") ImageCoordinator::userContentController(name, body);
    if (name != "downloadImage") IconCoordinator::userContentController(name, body);
    session.settle();
    if (model.isDownloading.get()) fuzz::fail("the busy overlay stayed up");
    return 0;
}

// The icon service's asset reply (v2/icons/asset) to a click on an icon:
// the first byte picks the status (200 saves the body as the icon and
// inserts it; anything else is read for the error envelope); the rest is
// the body. Whatever comes, the busy overlay comes down.

#include "FuzzPlatform.h"
#include "bridge/HardwareUUID.h"
#include "websearch/Icons.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    static constexpr int statuses[] = {200, 0, 404, 429, 500, 502, 503, 400};
    const int status = statuses[bytes.take() % std::size(statuses)];

    fuzz::Session session;
    setGlobalHardwareUUID("HW-1");
    session.fake.config->service = "https://svc.test/api";
    session.fake.http->route("https://svc.test/api/v2/icons/asset", {status, {}, std::string(bytes.text), std::nullopt});
    session.fake.http->route("https://svc.test/api/v2/icons/quota", {200, {}, R"({"limit":50,"remaining":49})", std::nullopt});
    auto& model = IconViewModel::shared();
    model.isDownloading.set(false);
    model.exhaustedVisible.set(false);

    IconCoordinator::userContentController("iconClicked", R"({"provider":"lineart","id":"4100"})");
    session.settle();
    if (model.isDownloading.get()) fuzz::fail("the busy overlay stayed up");
    const auto saved = session.fake.files->read(iconCacheFolder() + "/lineart-4100.svg", nullptr);
    if (status == 200 && saved != std::string(bytes.text)) fuzz::fail("a 200 reply was not saved as it came");
    if (status != 200 && saved) fuzz::fail("an error reply was saved as the icon");
    return 0;
}

// The template manifest from the CDN: decoded strictly, then synced by the
// template library (cache names from its locations, thumbnails fetched one
// after another) and shown in its pane. Each thumbnail answers with a few
// bytes, so its name reaches the files port.

#include "FuzzPlatform.h"
#include "templatelibrary/TemplateLibraryPane.h"
#include "templatelibrary/TemplateModel.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string body(reinterpret_cast<const char*>(data), size);
    const auto decoded = decodeManifest(body);
    if (decoded.manifest.has_value() == !decoded.error.empty()) fuzz::fail("a manifest and an error at once, or neither");

    fuzz::Session session;
    session.fake.http->route("https://cdn.test/manifest.json", {200, {}, body, std::nullopt});
    if (decoded.manifest) {
        // The first few thumbnails answer, the rest are 404s with no body.
        std::size_t served = 0;
        for (const auto& slide : decoded.manifest->slides) {
            if (++served > 8) break;
            session.fake.http->route(absoluteURL(slide.thumb, "https://cdn.test/"), {200, {}, "png", std::nullopt});
        }
    }
    auto model = TemplateLibraryViewModel::make();
    session.settle();
    if (model->isLoading.get()) fuzz::fail("the sync never finished");
    if (decoded.manifest && model->items.get().size() > decoded.manifest->slides.size()) {
        fuzz::fail("more templates than the manifest holds");
    }
    (void)model->describe();

    auto pane = std::make_shared<TemplateLibraryTaskpane>(model);
    fuzz::look(pane->body(250));
    const auto items = model->items.get();
    if (!items.empty()) {
        // A tap downloads the presentation file into the cache by its name.
        pane->tap(items.front());
        session.settle();
    }
    return 0;
}

// triggerAssistant's two texts: the input up to its first NUL is the
// selected shapes, the rest the other shapes of the slide. Both go through
// the exported function, as the macro project sends them.

#include "FuzzPlatform.h"
#include "assistant/ShapeMetadata.h"

extern "C" void triggerAssistant(const char* selectedJSON, const char* nonSelectedJSON);

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    const auto [selected, others] = fuzz::splitAtNul(bytes.text);

    // The decoder's promises: shapes only with success, a one-line error only without.
    for (const auto* text : {&selected, &others}) {
        const auto decoded = decodeShapeList(*text);
        if (decoded.ok != decoded.error.empty()) fuzz::fail("ok and the error disagree: " + decoded.error);
        if (!decoded.ok && !decoded.shapes.empty()) fuzz::fail("a failed decoding kept shapes");
        if (decoded.error.find('\n') != std::string::npos) fuzz::fail("the error runs over lines: " + decoded.error);
        // The log's list is one line whatever the names hold.
        if (describeShapes(decoded.shapes).find_first_of("\n\r") != std::string::npos) {
            fuzz::fail("the printed list runs over lines");
        }
    }

    fuzz::Session session;
    triggerAssistant(selected.c_str(), others.c_str());
    session.settle();
    // The rows' names are the detectors' own: the pane would show nothing from outside.
    return 0;
}

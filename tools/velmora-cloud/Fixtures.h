// The cloud's own fixtures: a catalogue of templates, their thumbnails and
// presentation files, and the manifest that lists them.
//
// Provides: TemplateFixture, catalogue(), manifestText(), thumbnailPNG(),
// presentationBytes(), fixtureBytes(), writeFixtures().
// Everything is a pure function of the template's number (from 1) and the
// CDN base URL, so two runs make the same bytes. Any thread.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velmora::cloud {

struct TemplateFixture {
    int number = 0;         // from 1
    std::string id, title;
    std::string thumbFile;  // below the CDN root: "thumbs/tpl-0001.png"
    std::string pptxFile;   // "slides/tpl-0001.pptx"
    std::string thumb, pptx;  // as the manifest writes them: relative, "/"-led or absolute
    std::string cat, pack;    // empty for some
};

// Template `number` as listed below `cdnBase` ("http://127.0.0.1:P/cdn/").
// Locations take turns: "thumbs/x.png", "/thumbs/x.png", then absolute.
// Numbers 5 and 11 share the thumbnail file name "cover.png" in two folders.
TemplateFixture templateFixture(int number, const std::string& cdnBase);
std::vector<TemplateFixture> catalogue(std::size_t count, const std::string& cdnBase);

// {"slides":[{"id","title","thumb","pptx","cat","pack"}, ...]}, keys in that order.
std::string manifestText(std::size_t count, const std::string& cdnBase);

// A 320x180 slide-like picture: title bar, a coloured shape and the
// template's number in segment digits (no fonts, so every machine draws
// the same pixels).
std::string thumbnailPNG(int number);
// An sRGB colour, each channel 0...1, as cairo takes it.
struct Colour {
    double r, g, b;
};
// A colour from hue (degrees), saturation and value (0...1); the fixtures'
// pictures, and the simulator's sample thumbnails, draw their palettes with it.
Colour hue(double degrees, double saturation, double value);

// Held while cairo draws: its caches hand memory between threads through
// atomics ThreadSanitizer cannot see, so pictures are drawn one at a time.
std::mutex& drawingMutex();

// Bytes that name the template; not an office document.
std::string presentationBytes(const TemplateFixture& fixture);

// The bytes of a generated file below the CDN root ("thumbs/tpl-0042.png",
// "slides/tpl-0042.pptx", "thumbs/cover.png", "thumbs/extra/cover.png"),
// for any number up to a million; an icon's thumbnail
// ("icons/lineart-4100.svg"), a photo ("photos/sea-02.png",
// "photos/sea-02-small.png") or a photographer's page ("people/ada_lind");
// nothing for other names.
std::optional<std::string> fixtureBytes(const std::string& relativePath);

// Writes the manifest and every file of `count` templates below `folder`.
// Throws std::runtime_error when a file cannot be written.
void writeFixtures(const std::string& folder, std::size_t count, const std::string& cdnBase);

}  // namespace velmora::cloud

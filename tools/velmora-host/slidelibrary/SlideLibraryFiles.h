// The user's slide library as it lies in the simulator's sandbox: a folder
// in the home directory with one JSON metadata file and a Thumbnail folder
// of PNGs named after each slide, and the sample library the simulator
// writes there at start.
//
// Provides: slideLibraryFolder(), metadataFile(), thumbnailFile(),
// SampleSlide, sampleSlides(), sampleMetadata(), thumbnailPNG(),
// writeSampleLibrary(), setLibraryReadOnly(), libraryReadOnly().
// Paths are real paths below the sandbox. Drawing and writing happen on the
// main thread; the path functions and sampleSlides() suit any thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora::host {

// "<sandbox><home>/Library/Application Support/.../User/SlideLibrary".
std::filesystem::path slideLibraryFolder();
std::filesystem::path metadataFile();
// The thumbnail of the slide so named; nothing for a name that cannot be a
// file name (empty, ".", "..", or with a '/').
std::optional<std::filesystem::path> thumbnailFile(const std::string& fullSlideName);

struct SampleSlide {
    std::string name, text;
    std::vector<std::string> tags;
    std::string dateSaved, slidesFileName;
    int art = 0;               // which picture the thumbnail draws
    bool thumbnail = true;     // false: left out of the sample on purpose
};

// The sample, in file order: names unique, two records sharing one
// SlidesFileName, one without its thumbnail.
const std::vector<SampleSlide>& sampleSlides();
std::string sampleMetadata();

// A 4:3 picture of the slide: its title, an accent bar and a small chart;
// a name outside the sample gets a plain one with that title.
std::string thumbnailPNG(const std::string& fullSlideName, int width = 320, int height = 240);

// Writes the sample's metadata and thumbnails, and removes every other
// thumbnail. Throws ScenarioError when a file cannot be written.
void writeSampleLibrary();

// Makes the folder and the metadata file read-only, or writable again.
// Root ignores modes, so for root the two are made immutable as well.
// Gives an error text when that could not be done.
std::optional<std::string> setLibraryReadOnly(bool on);
bool libraryReadOnly();

}  // namespace velmora::host

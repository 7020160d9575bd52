// The photo search's fixtures: 48 pictures drawn with cairo (mountains, sea,
// forest, city, desert, night sky, flowers, abstract shapes), the people who
// "took" them, and the search over them by page number.
//
// Provides: PhotoFixture, Photographer, photoFixtures(), findPhoto(),
// photographer(), photoPNG(), personPage(), PhotoPage, searchPhotos().
// Everything is a pure function of its arguments. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmora::cloud {

struct Photographer {
    std::string handle;               // "ada_lind": BASE/cdn/people/ada_lind
    std::optional<std::string> name;  // left out for one of them
};

struct PhotoFixture {
    int number = 0;                   // from 1
    std::string id;                   // "mountain-01"
    std::string theme;                // "mountain"
    std::optional<std::string> alt;   // nothing: null or left out, as altIsNull says
    bool altIsNull = false;
    std::vector<std::string> tags;
    std::size_t photographer = 0;     // index into the photographers
};

constexpr int photoWidth = 960, photoHeight = 640;          // BASE/cdn/photos/<id>.png
constexpr int smallPhotoWidth = 400, smallPhotoHeight = 267;  // BASE/cdn/photos/<id>-small.png

const std::vector<PhotoFixture>& photoFixtures();
const PhotoFixture* findPhoto(const std::string& id);
const std::vector<Photographer>& photographers();
const Photographer* findPhotographer(const std::string& handle);

// The photo as a PNG, full size or small.
std::string photoPNG(const PhotoFixture& photo, bool small);
// A short HTML page about the photographer.
std::string personPage(const Photographer& person);

struct PhotoPage {
    std::vector<const PhotoFixture*> results;
    std::optional<int> totalPages;
};

// Page `page` (from 1) of `perPage` photos whose tags and description hold
// every word of `query` (case-insensitive; an empty query finds them all).
// Words that change it: "nophotos" finds nothing, "nopages" leaves the
// page count out.
PhotoPage searchPhotos(const std::string& query, int page, int perPage);

}  // namespace velmora::cloud

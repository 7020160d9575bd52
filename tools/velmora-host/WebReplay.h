// A search the icon or photo page would make, run by the simulator against
// the live cloud and recorded into the page, so a snapshot shows results
// after the cloud is gone.
//
// Provides: recordSearch().
#pragma once

#include <string>

#include "hosts/common/MemoryWeb.h"

namespace velmora::host {

// Runs TERM's search for the page in `view`, fetches the thumbnails as data
// URIs and sets the replay; prints one line, titled `title`, either way.
void recordSearch(hosts::MemoryWebView& view, const std::string& title, const std::string& term);

}  // namespace velmora::host

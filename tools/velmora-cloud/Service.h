// The service's icon and photo routes as the cloud answers them when no
// fault is in the way, and the error envelope every failure shares:
//   {"error":{"code":"...","message":"...","retryable":false}}
//
// Provides: Reply, errorEnvelope(), errorStatus(), errorRetryable(),
// errorMessage(), iconSearch(), iconAsset(), iconQuota(), photoSearch(),
// trackDownload(), photoDownload().
// Pure apart from the callbacks the cloud hands in for the quotas. Any thread.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Cloud.h"

namespace velmora::cloud::service {

struct Reply {
    int status = 200;
    std::string type;  // empty: no body
    std::string body;
};

// The envelope; "retryable" is left out when nothing is given.
std::string errorEnvelope(const std::string& code, const std::string& message, std::optional<bool> retryable);
// What a code comes with unless told otherwise: its status (500 for codes of
// its own), whether it is worth retrying, and a sentence.
int errorStatus(const std::string& code);
bool errorRetryable(const std::string& code);
std::string errorMessage(const std::string& code);

using Query = std::vector<QueryItem>;

// v2/icons/search: {"items":[{"id","provider","title","attribution","thumbnailUrl"}],
// "paging":{"nextCursor","total"}}, the optional keys left out where a fixture has none.
Reply iconSearch(const Query& query, const std::string& cdnBase);
// v2/icons/asset: the SVG in the colour asked for; `spend` takes one download
// from the licence's quota and says false when none is left.
Reply iconAsset(const Query& query, const std::function<bool(const std::string& licenseKey)>& spend);
// v2/icons/quota: {"limit","remaining"}.
Reply iconQuota(const Query& query, const std::function<Quota(const std::string& licenseKey)>& quotaOf);
// get_searchImage: {"total_pages","results":[...]}.
Reply photoSearch(const Query& query, const std::string& cdnBase);
// get_trackDownload: {"ok":true} when a downloadLocation came.
Reply trackDownload(const Query& query);

// The CDN's answer to a photo's download location ("photos/<id>/download"):
// {"url": the photo's file}; nothing for other paths.
std::optional<Reply> photoDownload(const std::string& relativePath, const std::string& cdnBase);

}  // namespace velmora::cloud::service

// The HTTP GET through libcurl.
#pragma once

#include "HttpGet.h"

namespace plattmix::audiocd {

// Follows redirects; a status other than 200 is a reply (status set, error empty), no reply at
// all (no network, refused, timed out, stopped, too long) is an error text.
HttpReply CurlHttpGet(const HttpRequest& request);

}  // namespace plattmix::audiocd

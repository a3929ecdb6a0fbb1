#pragma once

#include <curl/curl.h>

#include "QXPlatform/foundation/Handle.h"

namespace QXPlatform {

using EasyHandle = Handle<CURL, &curl_easy_cleanup>;
using MultiHandle = Handle<CURLM, &curl_multi_cleanup>;
using HeaderList = Handle<curl_slist, &curl_slist_free_all>;
using URLHandle = Handle<CURLU, &curl_url_cleanup>;
using CurlText = Handle<char, &curl_free>;

}  // namespace QXPlatform

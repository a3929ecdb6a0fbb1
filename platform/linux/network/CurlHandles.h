#pragma once

#include <curl/curl.h>

#include "platform/linux/Handle.h"

namespace platform::network {

using EasyHandle = linux_::Handle<CURL, &curl_easy_cleanup>;
using MultiHandle = linux_::Handle<CURLM, &curl_multi_cleanup>;
using HeaderList = linux_::Handle<curl_slist, &curl_slist_free_all>;
using URLHandle = linux_::Handle<CURLU, &curl_url_cleanup>;
using CurlText = linux_::Handle<char, &curl_free>;

}  // namespace platform::network

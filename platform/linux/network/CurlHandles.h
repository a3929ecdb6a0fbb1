#pragma once

#include <curl/curl.h>

#include <memory>

namespace platform::network {

template <auto release>
struct CurlDeleter {
  template <typename T>
  void operator()(T* handle) const {
    release(handle);
  }
};

using EasyHandle = std::unique_ptr<CURL, CurlDeleter<&curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, CurlDeleter<&curl_multi_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, CurlDeleter<&curl_slist_free_all>>;
using URLHandle = std::unique_ptr<CURLU, CurlDeleter<&curl_url_cleanup>>;
using CurlText = std::unique_ptr<char, CurlDeleter<&curl_free>>;

}  // namespace platform::network

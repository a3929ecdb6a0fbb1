// One GET by the bare client library, for the memory that every program which uses it needs.

#include <curl/curl.h>

#include <cstdio>

namespace {

std::size_t discard(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: qx_bare_get URL\n");
    return 2;
  }
  CURL* const curl = curl_easy_init();
  curl_easy_setopt(curl, CURLOPT_URL, argv[1]);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &discard);
  const CURLcode code = curl_easy_perform(curl);
  curl_easy_cleanup(curl);
  if (code != CURLE_OK) std::fprintf(stderr, "qx_bare_get: %s\n", curl_easy_strerror(code));
  return code == CURLE_OK ? 0 : 1;
}

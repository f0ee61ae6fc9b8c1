#include "protocol/service_url.hpp"

#include <gtest/gtest.h>

namespace vantorium {
namespace {

TEST(ServiceURLTest, AcceptsAddressesOfServicesOnly) {
  for (const char* url :
       {"https://api.example.com", "https://10.0.0.1:8443", "http://127.0.0.1:80", "https://h:65535",
        "http://localhost", "HTTPS://api.example.com", "http://127.9.9.9"})
    EXPECT_EQ(checkServiceURL(url), std::nullopt) << url;
  for (const char* url : {"",
                          "api.example.com",
                          "http://api.example.com",
                          "https://",
                          "https://h/",
                          "https://h/path",
                          "https://h?q",
                          "https://h#f",
                          "ftp://h",
                          "file:///etc/passwd",
                          "https:h",
                          "http://127.0.0.1.evil.example",
                          "http://localhost@evil.example",
                          "https://user@h",
                          "http://localhost.evil.example",
                          "http://[::2]",
                          "https://h h",
                          "https://h:port",
                          "https://h:",
                          "https://h:0",
                          "https://h:65536",
                          "https://h:99999999999999999999",
                          "http://[::1]:8080",
                          "https://[::1]",
                          "https://h%41",
                          "https://\xff"}) {
    const auto error = checkServiceURL(url);
    ASSERT_TRUE(error) << url;
    EXPECT_NE(error->errorMessage().find(url), std::string::npos);
  }
}

}  // namespace
}  // namespace vantorium

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vantorium {

/// The zip format's traditional encryption: weak, but what archives with a password use. The minizip of
/// Debian is built without reading it, and writes it wrongly on 64-bit machines.
class TraditionalCipher {
 public:
  /// So many bytes come before the content; the last of them lets a reader check the password.
  static constexpr std::size_t headerBytes = 12;

  explicit TraditionalCipher(std::string_view password);

  /// In place; the bytes of an entry follow each other from call to call.
  void encrypt(std::span<char> bytes);
  void decrypt(std::span<char> bytes);

 private:
  unsigned char mask() const;
  void update(unsigned char plain);

  std::array<std::uint32_t, 3> keys_;
};

}  // namespace vantorium

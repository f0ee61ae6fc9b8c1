#include "archive/traditional_cipher.hpp"

#include <zlib.h>

namespace vantorium {

namespace {

std::uint32_t crcStep(std::uint32_t value, std::uint32_t byte) {
  return get_crc_table()[(value ^ byte) & 0xFFU] ^ (value >> 8U);
}

}  // namespace

TraditionalCipher::TraditionalCipher(std::string_view password)
    : keys_{0x12345678U, 0x23456789U, 0x34567890U} {
  for (const char c : password) update(static_cast<unsigned char>(c));
}

unsigned char TraditionalCipher::mask() const {
  const std::uint32_t seed = (keys_[2] & 0xFFFFU) | 2U;
  return static_cast<unsigned char>((seed * (seed ^ 1U)) >> 8U);
}

void TraditionalCipher::update(unsigned char plain) {
  keys_[0] = crcStep(keys_[0], plain);
  keys_[1] = (keys_[1] + (keys_[0] & 0xFFU)) * 134775813U + 1;
  keys_[2] = crcStep(keys_[2], keys_[1] >> 24U);
}

void TraditionalCipher::encrypt(std::span<char> bytes) {
  for (char& c : bytes) {
    const auto plain = static_cast<unsigned char>(c);
    c = static_cast<char>(plain ^ mask());
    update(plain);
  }
}

void TraditionalCipher::decrypt(std::span<char> bytes) {
  for (char& c : bytes) {
    const auto plain = static_cast<unsigned char>(static_cast<unsigned char>(c) ^ mask());
    c = static_cast<char>(plain);
    update(plain);
  }
}

}  // namespace vantorium

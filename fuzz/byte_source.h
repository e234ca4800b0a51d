// byte_source.h - values out of fuzz input, mostly sensible ones; zeros when the bytes run out.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

class ByteSource {
public:
  ByteSource(const std::uint8_t *data, std::size_t size) : data(data), left(size) {}

  bool empty() const { return left == 0; }
  std::uint8_t byte() {
    if (left == 0) return 0;
    left--;
    return *data++;
  }
  /// 0 to count - 1.
  int below(int count) {
    const unsigned high = byte();
    return static_cast<int>((high << 8 | byte()) % static_cast<unsigned>(count));
  }
  /// 0 to 1 in 65536 steps.
  double fraction() {
    const unsigned high = byte();
    return static_cast<double>(high << 8 | byte()) / 65535;
  }
  /// Any double at all, also one that is not finite.
  double any() {
    unsigned char bytes[sizeof(double)];
    for (unsigned char &b : bytes) b = byte();
    double value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }
  /// Mostly -2 to 2, sometimes any double.
  double coefficient() {
    const int kind = byte();
    if (kind >= 252) return any();
    if (kind >= 248) return kind - 249; // -1, 0, 1, 2
    return 4 * fraction() - 2;
  }
  std::string rest() {
    std::string text(reinterpret_cast<const char *>(data), left);
    left = 0;
    return text;
  }

private:
  const std::uint8_t *data;
  std::size_t left;
};

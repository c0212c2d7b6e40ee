#pragma once

#include <QString>

#include <array>
#include <cstddef>

// Built-in service names that should not be readable with `strings` in the shipped
// binary. The mask is applied while compiling (the plain literal exists only during
// constant evaluation) and removed at run time by an out-of-line decoder that the
// optimiser cannot fold back into a literal.
constexpr unsigned char maskByteAt(std::size_t index)
{
    return static_cast<unsigned char>(0xC3u ^ ((index * 53u + 0x1Du) & 0xFFu));
}

// Decodes `length` masked bytes (UTF-8 once unmasked).
QString unmaskText(const unsigned char* bytes, std::size_t length);

template <std::size_t N> class RMaskedText {
public:
    consteval RMaskedText(const char (&plain)[N])
    {
        for (std::size_t i = 0; i < N - 1; ++i)
            m_bytes[i] = static_cast<unsigned char>(plain[i]) ^ maskByteAt(i);
    }

    QString text() const { return unmaskText(m_bytes.data(), N - 1); }

private:
    std::array<unsigned char, N - 1> m_bytes {};
};

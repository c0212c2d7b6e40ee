#include "vtvplugin/trailers/TrailerCredentials.h"

#include <QByteArray>

#include <array>
#include <cstddef>

namespace {

// Each byte is kept as (plain + 7 * index + 0x35) xor 0xA6; the scrambling happens at
// compile time, so the plain text never reaches the binary.
constexpr unsigned char scramble(unsigned char plain, std::size_t index)
{
    return static_cast<unsigned char>((plain + 7u * index + 0x35u) ^ 0xA6u);
}

template <std::size_t N> class Hidden {
public:
    consteval Hidden(const char (&plain)[N])
    {
        for (std::size_t i = 0; i < N - 1; ++i)
            m_bytes[i] = scramble(static_cast<unsigned char>(plain[i]), i);
    }
    const unsigned char* data() const { return m_bytes.data(); }
    static constexpr std::size_t size() { return N - 1; }

private:
    std::array<unsigned char, N - 1> m_bytes {};
};

// Out of line and reading through a volatile pointer, so the optimiser cannot fold the
// texts back into literals.
[[gnu::noinline]] QString reveal(const unsigned char* bytes, std::size_t length)
{
    const volatile unsigned char* const source = bytes;
    QByteArray plain(qsizetype(length), Qt::Uninitialized);
    for (std::size_t i = 0; i < length; ++i)
        plain[qsizetype(i)] = static_cast<char>(((source[i] ^ 0xA6u) - 7u * i - 0x35u) & 0xFFu);
    return QString::fromLatin1(plain);
}

constexpr Hidden kApiKey("7c1f9a4e02d85b36e9a1c4f07d2b58e3");
constexpr Hidden kSecret("vtv-feed:3b9e61c0f4a27d85:signing");

} // namespace

QString TrailerCredentials::apiKey()
{
    return reveal(kApiKey.data(), kApiKey.size());
}

QString TrailerCredentials::signingSecret()
{
    return reveal(kSecret.data(), kSecret.size());
}

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

/// A fuzzer's input, taken from its front. What is no longer there is zero, or empty.
class CInput
{
public:
    CInput(std::uint8_t const* pbyData, std::size_t nLength)
        : m_strRest(reinterpret_cast<char const*>(pbyData), nLength)
    {
    }

    bool IsEmpty() const { return m_strRest.empty(); }
    std::string_view Rest() const { return m_strRest; }

    /// Little-endian.
    template <class T>
    T Number()
    {
        T nNumber = 0;
        std::memcpy(&nNumber, m_strRest.data(), std::min(sizeof nNumber, m_strRest.size()));
        Bytes(sizeof nNumber);
        return nNumber;
    }
    std::string_view Bytes(std::size_t nMost)
    {
        const std::string_view strBytes = m_strRest.substr(0, nMost);
        m_strRest.remove_prefix(strBytes.size());
        return strBytes;
    }
    std::string_view Line()
    {
        const std::string_view strLine = Bytes(std::min(m_strRest.find('\n'), m_strRest.size()));
        Bytes(1);
        return strLine;
    }
    /// A line into a field of a record: without a terminator when it fills the field.
    template <std::size_t n>
    void Line(char (&szField)[n])
    {
        const std::string_view strLine = Line();
        std::memset(szField, 0, n);
        std::memcpy(szField, strLine.data(), std::min(n, strLine.size()));
    }

private:
    std::string_view m_strRest;
};

/// What must hold for every input: anything else is a crash for the fuzzer to keep.
#define REQUIRE(holds)                                                                                                 \
    ((holds) ? void() : (std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #holds), std::abort()))

/// The text in a field, which may lack its terminator.
template <std::size_t n>
std::string_view FieldText(char const (&szField)[n])
{
    return {szField, strnlen(szField, n)};
}

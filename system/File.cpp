#include "system/File.h"

#include "system/OutputMessage.h"

#include <cerrno>
#include <cstdint>
#include <utility>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "File.cpp";
}

CFile::CFile() : m_pFile(nullptr) {}

CFile::CFile(CFile const&) = default;

CFile::~CFile() = default;

CFile& CFile::operator=(CFile const&) // NOLINT(bugprone-unhandled-self-assignment): changes nothing
{
    return *this;
}

int CFile::create(char const* szPath, char const* szMode)
{
    if (!szPath)
    {
        DiagnosticLine(g_szSource, "create", 29);
        return 1;
    }
    errno = EINVAL; // a missing mode is as wrong as an unknown one
    m_pFile = szMode ? std::fopen(szPath, szMode) : nullptr;
    if (!m_pFile)
    {
        SystemErrorLine(g_szSource, "create", 35);
        return 1;
    }
    return 0;
}

int CFile::destroy()
{
    if (m_pFile)
    {
        std::fclose(std::exchange(m_pFile, nullptr));
    }
    return 0;
}

int CFile::read(void* pBuffer, unsigned long dwSize, unsigned long dwCount)
{
    if (!m_pFile)
    {
        DiagnosticLine(g_szSource, "read", 57);
        return 1;
    }
    return static_cast<int>(std::fread(pBuffer, dwSize, dwCount, m_pFile));
}

int CFile::write(void const* pBuffer, unsigned long dwSize, unsigned long dwCount)
{
    if (!m_pFile)
    {
        DiagnosticLine(g_szSource, "write", 68);
        return 1;
    }
    return static_cast<int>(std::fwrite(pBuffer, dwSize, dwCount, m_pFile));
}

int CFile::eof()
{
    if (!m_pFile)
    {
        DiagnosticLine(g_szSource, "eof", 79);
        return 0;
    }
    return std::feof(m_pFile) == 0 ? 1 : 0;
}

int CFile::seek(unsigned long dwOffset, int nWhence)
{
    if (!m_pFile)
    {
        errno = EBADF;
        return -1;
    }
    return std::fseek(m_pFile, static_cast<std::int32_t>(dwOffset), nWhence);
}

int CFile::flush()
{
    if (!m_pFile)
    {
        errno = EBADF;
        return EOF;
    }
    return std::fflush(m_pFile);
}
} // namespace Adapter_System

#include "system/File.h"

#include "system/OutputMessage.h"

#include <cerrno>
#include <cstdint>
#include <new>

namespace Adapter_System
{
namespace
{
constexpr char g_szSource[] = "File.cpp";
}

CFile::CFile() = default;

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
    m_pFile.reset();
    try
    {
        m_pFile = std::make_shared<std::FILE*>(nullptr);
        errno = EINVAL; // a missing mode is as wrong as an unknown one
        *m_pFile = szMode ? std::fopen(szPath, szMode) : nullptr;
    }
    catch (std::bad_alloc const&)
    {
        errno = ENOMEM;
    }
    if (!Stream())
    {
        SystemErrorLine(g_szSource, "create", 35);
        return 1;
    }
    return 0;
}

int CFile::destroy()
{
    if (std::FILE* pFile = Stream())
    {
        *m_pFile = nullptr;
        std::fclose(pFile);
    }
    return 0;
}

int CFile::read(void* pBuffer, unsigned long dwSize, unsigned long dwCount)
{
    if (!Stream())
    {
        DiagnosticLine(g_szSource, "read", 57);
        return 1;
    }
    return static_cast<int>(std::fread(pBuffer, dwSize, dwCount, Stream()));
}

int CFile::write(void const* pBuffer, unsigned long dwSize, unsigned long dwCount)
{
    if (!Stream())
    {
        DiagnosticLine(g_szSource, "write", 68);
        return 1;
    }
    return static_cast<int>(std::fwrite(pBuffer, dwSize, dwCount, Stream()));
}

int CFile::eof()
{
    if (!Stream())
    {
        DiagnosticLine(g_szSource, "eof", 79);
        return 0;
    }
    return std::feof(Stream()) == 0 ? 1 : 0;
}

int CFile::seek(unsigned long dwOffset, int nWhence)
{
    if (!Stream())
    {
        errno = EBADF;
        return -1;
    }
    return std::fseek(Stream(), static_cast<std::int32_t>(dwOffset), nWhence);
}

int CFile::flush()
{
    if (!Stream())
    {
        errno = EBADF;
        return EOF;
    }
    return std::fflush(Stream());
}
} // namespace Adapter_System

#pragma once

#include "Export.h"

#include <cstdio>

namespace Adapter_System
{
/// A buffered file. Opened by create and closed by destroy; the destructor closes nothing. A copy names the same
/// stream, and the stream is closed once: by destroy on one of them, after which no other may be used. One thread at a
/// time for an object and all its copies.
/// @ingroup classes
class TESSARO_API CFile
{
public:
    CFile();
    CFile(CFile const& tOther); ///< names the same stream
    virtual ~CFile();
    CFile& operator=(CFile const& tOther); ///< changes nothing

    /// Opens szPath; szMode as for fopen. 0, or 1 with a line. A file that is open already isn't closed first.
    int create(char const* szPath, char const* szMode);
    int destroy(); ///< 0, also when none is open
    /// The number of whole items read; 1 with a line when no file is open.
    int read(void* pBuffer, unsigned long dwSize, unsigned long dwCount);
    /// The number of whole items written; 1 with a line when no file is open.
    int write(void const* pBuffer, unsigned long dwSize, unsigned long dwCount);
    /// 1 while more may follow; 0 once a read met the end, and, with a line, when no file is open.
    int eof();
    /// fseek's result; dwOffset counts as a signed 32-bit number. Without a file -1, errno EBADF.
    int seek(unsigned long dwOffset, int nWhence);
    /// fflush's result. Without a file EOF, errno EBADF, and no other stream is flushed.
    int flush();

private:
    std::FILE* m_pFile;
};
} // namespace Adapter_System

#pragma once

#include "adapter/ClientAdapter.h"

#include <string>
#include <vector>

namespace tessaro
{
/// The file that the library opens for a protocol: "libVTQ.so".
std::string PluginName(eProtocolType eProtocol);

/// The file of the library itself.
std::string LibraryFile();

/// The folders where the library looks for plug-ins, in their order, as the dynamic loader has them.
std::vector<std::string> SearchFolders();

/// Opens a plug-in as the library does, a bare name in its folders. Null: dlerror says why.
void* OpenPlugin(std::string const& strFile);

/// What a file is, by its header: "64-bit x86-64", or why it is no library. bRight: this process can load it.
std::string FileKind(std::string const& strFile, bool& bRight);

/// What became of opening a plug-in.
struct tagTrial
{
    bool bOpened = false;
    std::string strFile;                  ///< the file that the loader took
    std::string strProblem;               ///< the loader's words, or how it ended the process
    std::vector<std::string> astrMissing; ///< entry points that it lacks
    std::size_t nThere = 0;               ///< entry points that it has
};
/// Opens a file as the library would, in a process of its own: a plug-in that throws while it is loaded ends that one.
/// Before the library is started.
tagTrial TryPlugin(eProtocolType eProtocol, std::string const& strFile);
} // namespace tessaro

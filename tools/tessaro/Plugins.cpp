#include "tools/tessaro/Plugins.h"

#include "adapter/ClientAdapterExtra.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <exception>
#include <fmt/format.h>
#include <fstream>
#include <link.h>
#include <memory>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tessaro
{
namespace
{
constexpr int g_nPatienceMs = 20000;

char const* Machine(unsigned int wMachine)
{
    switch (wMachine)
    {
    case EM_X86_64:
        return "x86-64";
    case EM_386:
        return "x86";
    case EM_ARM:
        return "ARM";
    case EM_AARCH64:
        return "ARM64";
    default:
        return "an unknown machine";
    }
}

struct tagKind
{
    bool bLibrary = false;
    unsigned int byClass = 0;
    unsigned int wMachine = 0;
};

tagKind ReadKind(std::string const& strFile)
{
    unsigned char aby[20]{};
    std::ifstream tFile(strFile, std::ios::binary);
    tFile.read(reinterpret_cast<char*>(aby), sizeof aby);
    const bool bElf = tFile.gcount() == sizeof aby && std::memcmp(aby, ELFMAG, SELFMAG) == 0;
    // Type and machine in the file's byte order.
    const auto Half = [&](int i)
    { return aby[EI_DATA] == ELFDATA2MSB ? aby[i] * 256u + aby[i + 1] : aby[i] + aby[i + 1] * 256u; };
    return {bElf && Half(16) == ET_DYN, aby[EI_CLASS], Half(18)};
}

// Everything that the child has to say: one line each, "key text".
void Speak(int nPipe, std::string const& strKey, std::string const& strText)
{
    const std::string strLine = strKey + " " + strText + "\n";
    [[maybe_unused]] const auto nWritten = write(nPipe, strLine.data(), strLine.size());
}

[[noreturn]] void TryInChild(eProtocolType eProtocol, std::string const& strFile, int nPipe)
{
    static int s_nPipe = nPipe;
    std::set_terminate(
        []
        {
            std::string strWhat = "it throws an exception while it is loaded";
            if (const auto pError = std::current_exception())
            {
                try
                {
                    std::rethrow_exception(pError);
                }
                catch (std::exception const& tError)
                {
                    strWhat += std::string(": ") + tError.what();
                }
                catch (...)
                {
                }
            }
            Speak(s_nPipe, "problem", strWhat);
            _exit(0);
        });
    alarm(g_nPatienceMs / 1000);
    void* const hModule = OpenPlugin(strFile);
    if (!hModule)
    {
        Speak(nPipe, "problem", dlerror());
        _exit(0);
    }
    link_map* ptMap = nullptr;
    dlinfo(hModule, RTLD_DI_LINKMAP, &ptMap);
    Speak(nPipe, "opened", ptMap && ptMap->l_name ? ptMap->l_name : strFile);
    tagEntryPoint tEntry{};
    tEntry.dwSize = sizeof tEntry;
    for (unsigned int i = 0; TessaroExtra_GetEntryPoint(eProtocol, i, &tEntry) == eResultOk; ++i)
    {
        Speak(nPipe, dlsym(hModule, tEntry.szSymbol) ? "there" : "missing", tEntry.szSymbol);
    }
    _exit(0); // no destructor of the plug-in runs
}

void TakeLine(tagTrial& tTrial, std::string const& strLine)
{
    const auto nSpace = strLine.find(' ');
    const std::string strKey = strLine.substr(0, nSpace);
    const std::string strText = nSpace == std::string::npos ? "" : strLine.substr(nSpace + 1);
    if (strKey == "opened")
    {
        tTrial.bOpened = true;
        tTrial.strFile = strText;
    }
    else if (strKey == "problem")
    {
        tTrial.strProblem = strText;
    }
    else if (strKey == "missing")
    {
        tTrial.astrMissing.push_back(strText);
    }
    else if (strKey == "there")
    {
        ++tTrial.nThere;
    }
}
} // namespace

std::string PluginName(eProtocolType eProtocol)
{
    static constexpr char const* s_aszNames[] = {"libvornclient.so", "libonvifclient.so", "librtspclient.so",
                                                 "libVTQ.so"};
    return s_aszNames[eProtocol];
}

std::string LibraryFile()
{
    Dl_info tInfo{};
    dladdr(reinterpret_cast<void*>(&ClientAdapter_Start), &tInfo);
    return tInfo.dli_fname ? tInfo.dli_fname : "";
}

std::vector<std::string> SearchFolders()
{
    std::vector<std::string> astrFolders;
    void* const hLibrary = dlopen(LibraryFile().c_str(), RTLD_LAZY | RTLD_NOLOAD);
    Dl_serinfo tSize{};
    if (hLibrary && dlinfo(hLibrary, RTLD_DI_SERINFOSIZE, &tSize) == 0)
    {
        const auto pRoom = std::make_unique<std::max_align_t[]>(tSize.dls_size / sizeof(std::max_align_t) + 1);
        auto* const ptInfo = reinterpret_cast<Dl_serinfo*>(pRoom.get());
        dlinfo(hLibrary, RTLD_DI_SERINFOSIZE, ptInfo);
        if (dlinfo(hLibrary, RTLD_DI_SERINFO, ptInfo) == 0)
        {
            for (unsigned int i = 0; i < ptInfo->dls_cnt; ++i)
            {
                astrFolders.emplace_back(ptInfo->dls_serpath[i].dls_name);
            }
        }
        dlclose(hLibrary);
    }
    return astrFolders;
}

void* OpenPlugin(std::string const& strFile)
{
    // The loader would look where this program looks.
    const bool bBare = strFile.find('/') == std::string::npos;
    for (std::string const& strFolder : bBare ? SearchFolders() : std::vector<std::string>{})
    {
        if (void* const hModule = dlopen((strFolder + "/" + strFile).c_str(), RTLD_LAZY | RTLD_LOCAL))
        {
            return hModule;
        }
    }
    return dlopen(strFile.c_str(), RTLD_LAZY | RTLD_LOCAL);
}

std::string FileKind(std::string const& strFile, bool& bRight)
{
    const tagKind tKind = ReadKind(strFile);
    const tagKind tOwn = ReadKind("/proc/self/exe");
    bRight = tKind.bLibrary && tKind.byClass == tOwn.byClass && tKind.wMachine == tOwn.wMachine;
    return tKind.bLibrary ? fmt::format("{}-bit {}", tKind.byClass == ELFCLASS32 ? 32 : 64, Machine(tKind.wMachine))
                          : "no library at all";
}

tagTrial TryPlugin(eProtocolType eProtocol, std::string const& strFile)
{
    tagTrial tTrial;
    tTrial.strFile = strFile;
    int anPipe[2];
    if (pipe(anPipe) != 0)
    {
        tTrial.strProblem = strerror(errno);
        return tTrial;
    }
    std::fflush(nullptr);
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        close(anPipe[0]);
        TryInChild(eProtocol, strFile, anPipe[1]);
    }
    close(anPipe[1]);
    std::string strAll;
    char ach[4096];
    for (ssize_t n = 0; (n = read(anPipe[0], ach, sizeof ach)) > 0 || (n < 0 && errno == EINTR);)
    {
        strAll.append(ach, n > 0 ? static_cast<std::size_t>(n) : 0);
    }
    close(anPipe[0]);
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    for (std::size_t nBegin = 0, nEnd = 0; (nEnd = strAll.find('\n', nBegin)) != std::string::npos; nBegin = nEnd + 1)
    {
        TakeLine(tTrial, strAll.substr(nBegin, nEnd - nBegin));
    }
    if (tTrial.strProblem.empty() && !tTrial.bOpened)
    {
        tTrial.strProblem = !WIFSIGNALED(nStatus)          ? "it ends the process while it is loaded"
                            : WTERMSIG(nStatus) == SIGALRM ? "loading it doesn't end"
                                                           : fmt::format("it ends the process while it is loaded: {}",
                                                                         strsignal(WTERMSIG(nStatus)));
    }
    return tTrial;
}
} // namespace tessaro

// Files that are no plug-ins: each has its line, and the other protocols go on working.

#include "tests/core/Support.h"

#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <elf.h>
#include <functional>
#include <sys/stat.h>

namespace
{
/// One way to be broken. fnMake writes the file, given the image of a sound plug-in.
struct tagBroken
{
    char const* szName;
    std::function<void(std::string const& strPath, std::string strImage)> fnMake;
};

void Write(std::string const& strPath, std::string const& strBytes)
{
    std::ofstream(strPath, std::ios::binary) << strBytes;
}

// The image with one byte of its ELF header changed.
auto Patched(std::size_t nAt, int nValue)
{
    return [=](std::string const& strPath, std::string strImage)
    {
        strImage.at(nAt) = static_cast<char>(nValue);
        Write(strPath, strImage);
    };
}

auto CopyOf(char const* szModule)
{
    return [=](std::string const& strPath, std::string const&)
    { std::filesystem::copy_file(std::string(TESSARO_BROKEN) + "/" + szModule, strPath); };
}

const tagBroken g_atBroken[] = {
    {"absent", [](std::string const&, std::string const&) {}},
    {"empty", [](std::string const& strPath, std::string const&) { Write(strPath, ""); }},
    {"cut in its header",
     [](std::string const& strPath, std::string const& strImage) { Write(strPath, strImage.substr(0, 40)); }},
    {"not a library", [](std::string const& strPath, std::string const&) { Write(strPath, std::string(5000, '#')); }},
    {"for another machine", Patched(offsetof(Elf32_Ehdr, e_machine), EM_SPARC)},
    {"of the other word size", Patched(EI_CLASS, sizeof(void*) == 8 ? ELFCLASS32 : ELFCLASS64)},
    {"unreadable",
     [](std::string const& strPath, std::string const& strImage)
     {
         Write(strPath, strImage);
         chmod(strPath.c_str(), 0);
     }},
    {"a directory", [](std::string const& strPath, std::string const&) { std::filesystem::create_directory(strPath); }},
    {"with an undefined symbol", CopyOf("libbroken_undefined.so")},
    {"in need of a missing library", CopyOf("libbroken_needs.so")},
};

class Broken : public testing::TestWithParam<tagProtocol>
{
protected:
    Broken() : m_strPath(testing::TempDir() + "broken_" + std::to_string(getpid()) + ".so")
    {
        Journal().Reset();
        std::ifstream tIn(GetParam().Path(), std::ios::binary);
        m_strImage.assign(std::istreambuf_iterator<char>(tIn), {});
    }
    ~Broken() override
    {
        m_tSet.RemoveAllProtocol();
        std::filesystem::remove(m_strPath);
    }

    void CheckOpenFailed()
    {
        std::string strText = m_tCapture.Text();
        strText.erase(0, strText.find("\n.\n") + 3);
        EXPECT_TRUE(strText.starts_with("[Tessaro] Module.cpp Open 60 Failed syserr:")) << strText;
        EXPECT_EQ(strText.find(std::strerror(EPERM)), std::string::npos) << "an older error isn't this one's";
        strText.erase(0, strText.find('\n') + 1);
        EXPECT_EQ(strText, GetParam().eType == eProtocolVTQ ? "open vtq client fail \n" : "");
    }

    void CheckOthers()
    {
        for (tagProtocol const& tOther : g_atProtocols)
        {
            if (tOther.eType != GetParam().eType)
            {
                EXPECT_EQ(m_tSet.InsertProtocol(tOther.eType, tOther.Path().c_str()), 0);
                EXPECT_EQ(m_tSet.Start(tOther.eType), 0);
                EXPECT_EQ(Journal().Take().at(0).strEntry, std::string(tOther.szPrefix) + "Start");
            }
        }
        m_tSet.RemoveAllProtocol();
    }

    std::string m_strPath;
    std::string m_strImage;
    CCapture m_tCapture;
    CClientProtocolSet m_tSet;
};

TEST_P(Broken, FilesAreRefusedWithTheirLine)
{
    for (tagBroken const& tBroken : g_atBroken)
    {
        SCOPED_TRACE(tBroken.szName);
        tBroken.fnMake(m_strPath, m_strImage);
        const uid_t nUser = geteuid();
        const bool bDropped = nUser == 0 && strcmp(tBroken.szName, "unreadable") == 0 && seteuid(65534) == 0;
        m_tCapture.Text();
        errno = EPERM;
        EXPECT_EQ(m_tSet.InsertProtocol(GetParam().eType, m_strPath.c_str()), 0);
        CheckOpenFailed();
        EXPECT_EQ(!bDropped || seteuid(nUser) == 0, true);
        EXPECT_EQ(m_tSet.Start(GetParam().eType), 1) << "every operation answers as for a missing entry point";
        CheckOthers();
        std::filesystem::remove(m_strPath);
    }
    std::fprintf(stderr, "tried: %s: %zu kinds of broken file\n", GetParam().szPrefix, std::size(g_atBroken) + 2);
}

// In a process of its own: the dynamic loader stays locked for other threads. The sanitizers' loaders aren't made for
// it.
TEST_P(Broken, AConstructorMayThrow)
{
#if defined __SANITIZE_ADDRESS__ || defined __SANITIZE_THREAD__ || defined __arm__
    GTEST_SKIP() << "the exception can't leave dlopen";
#endif
    const auto fnLoad = [this]
    {
        m_strPath = std::string(TESSARO_BROKEN) + "/libbroken_throws.so";
        m_tCapture.Text();
        errno = EPERM;
        EXPECT_EQ(m_tSet.InsertProtocol(GetParam().eType, m_strPath.c_str()), 0);
        CheckOpenFailed();
        EXPECT_EQ(m_tSet.Start(GetParam().eType), 1);
        CheckOthers();
        _exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(fnLoad(), testing::ExitedWithCode(0), "");
}

TEST_P(Broken, NamesInWrongCapitalsAreMissing)
{
    std::string strExpected;
    for (std::string const& strName : Golden(GetParam().szLookUp))
    {
        const std::size_t nAt = m_strImage.find(std::string(1, '\0') + strName + '\0') + 1;
        m_strImage.at(nAt) = static_cast<char>(std::tolower(m_strImage.at(nAt)));
        strExpected += Line("Module", "Export", 80, strName);
    }
    Write(m_strPath, m_strImage);
    m_tCapture.Text();
    EXPECT_EQ(m_tSet.InsertProtocol(GetParam().eType, m_strPath.c_str()), 0);
    EXPECT_TRUE(m_tCapture.Text().ends_with(strExpected));
    EXPECT_EQ(m_tSet.Start(GetParam().eType), 1);
    CheckOthers();
}

INSTANTIATE_TEST_SUITE_P(Bindings, Broken, testing::ValuesIn(g_atProtocols), NameOf);
} // namespace

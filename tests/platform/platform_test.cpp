// The exported platform classes. What the system refuses is made to be refused: see Interposed.h.

#include "system/Buffer.h"
#include "system/File.h"
#include "system/Mutex.h"
#include "system/Signal.h"
#include "system/Utility.h"
#include "tests/core/Support.h"
#include "tests/platform/Interposed.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <thread>

// As without the sanitizers: a size that can't be had is answered by null, and a mutex may be unlocked by the wrong
// thread.
extern "C" TESSARO_API char const* __asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "allocator_may_return_null=1";
}
extern "C" TESSARO_API char const* __tsan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "allocator_may_return_null=1:report_mutex_bugs=0";
}

using namespace Adapter_System;

namespace
{
// strSite: "File create 35"
std::string ErrorLine(std::string strSite, int nError)
{
    strSite.insert(strSite.find(' '), ".cpp");
    return "[Tessaro] " + strSite + " Failed syserr:" + std::to_string(nError) + " " + std::strerror(nError) + "\n";
}

template <class F>
auto OnAnotherThread(F fnCall)
{
    return std::async(std::launch::async, fnCall).get();
}

template <class T>
class CCreated : public T
{
public:
    CCreated() { EXPECT_EQ(this->create(), 0); }
    ~CCreated() override { EXPECT_EQ(this->destroy(), 0); }
};

class CTemporaryPath
{
public:
    explicit CTemporaryPath(char const* szName) : m_strPath(testing::TempDir() + std::to_string(getpid()) + szName) {}
    ~CTemporaryPath() { std::filesystem::remove(m_strPath); }
    char const* Path() const { return m_strPath.c_str(); }

private:
    std::string m_strPath;
};

class Platform : public testing::Test
{
protected:
    CCapture m_tCapture;
};

// --- what every operation says of an object that isn't created, and of a system that refuses ------------------------

TEST_F(Platform, NotCreated)
{
    const CCreated<CMutex> tCreatedMutex;
    const CCreated<CSignal> tCreatedSignal;
    CMutex tFresh;
    CMutex tCopy(tCreatedMutex);
    CCreated<CMutex> tDestroyed;
    EXPECT_EQ(tDestroyed.destroy(), 0);
    for (CMutex* ptMutex : {&tFresh, &tCopy, static_cast<CMutex*>(&tDestroyed)})
    {
        EXPECT_EQ(ptMutex->lock() + ptMutex->trylock() + ptMutex->unlock(), 3);
        EXPECT_EQ(ptMutex->destroy(), 0);
        EXPECT_EQ(m_tCapture.Text(),
                  Line("Mutex", "lock", 158) + Line("Mutex", "trylock", 175) + Line("Mutex", "unlock", 196));
    }
    CSignal tFreshSignal;
    CSignal tCopySignal(tCreatedSignal);
    for (CSignal* ptSignal : {&tFreshSignal, &tCopySignal})
    {
        EXPECT_EQ(ptSignal->signal() + ptSignal->wait(0), 2);
        EXPECT_EQ(ptSignal->destroy(), 0);
        EXPECT_EQ(m_tCapture.Text(), Line("Signal", "signal", 138) + Line("Signal", "wait", 153));
    }
}

// The lines of calls that no argument makes fail.
TEST_F(Platform, TheSystemRefuses)
{
    CMutex tNewMutex;
    CSignal tNewSignal;
    CCreated<CMutex> tMutex;
    CCreated<CSignal> tSignal;
    struct tagRow
    {
        char const* szCall;
        int nError;
        std::function<int()> fnOperation;
        std::string strLine;
    };
    for (tagRow const& tRow :
         {
             tagRow{"pthread_mutexattr_init", ENOMEM, [&] { return tNewMutex.create(); }, "Mutex create 137"},
             {"pthread_mutex_init", EAGAIN, [&] { return tNewMutex.create(); }, "Mutex create 137"},
             {"pthread_mutex_lock", EAGAIN, [&] { return tMutex.lock(); }, "Mutex lock 164"},
             {"pthread_mutex_trylock", EINVAL, [&] { return tMutex.trylock(); }, "Mutex trylock 187"},
             {"pthread_mutex_init", EAGAIN, [&] { return tNewSignal.create(); }, "Signal create 107"},
             {"pthread_cond_init", ENOMEM, [&] { return tNewSignal.create(); }, "Signal create 113"},
             {"pthread_cond_timedwait", EINVAL, [&] { return tSignal.wait(1); }, "Signal wait 190"},
             {"pthread_cond_wait", EPERM, [&] { return tSignal.wait(CSignal::Infinite); }, "Signal wait 164"},
         })
    {
        m_tCapture.Text();
        const CInterposed tFault(tRow.szCall, tRow.nError);
        EXPECT_EQ(tRow.fnOperation(), 1) << tRow.szCall;
        EXPECT_EQ(m_tCapture.Text(), ErrorLine(tRow.strLine, tRow.nError));
    }
    EXPECT_EQ(tNewMutex.lock() + tNewSignal.signal(), 2) << "not created";
}

int g_nHeard; // the user data of an event

// An event waits for no lock: while it is taken, the latest subscription counts. A subscription needs it.
TEST_F(CSession, EventsWaitForNoLock)
{
    const auto fnOnEvent = [](void*, unsigned long, unsigned long, unsigned long, unsigned long, unsigned long dwUser)
    { return g_nHeard = static_cast<int>(dwUser); };
    EXPECT_EQ(ClientAdapter_SubscribeEvent(m_nLogin, 1, fnOnEvent, 1), 0);
    EXPECT_EQ(ClientAdapter_SubscribeEvent(m_nLogin, 1, fnOnEvent, 5), 0);
    const auto pfnEvent = Trampoline<DeviceEventCallback>();
    g_SetUserCallBack.at(m_nLogin).m_dwUserEvent = 6; // what counts while the record can be looked at
    for (auto const& [szCall, nHeard] : {std::pair("pthread_mutex_lock", 6), {"pthread_mutex_trylock", 5}})
    {
        const CInterposed tFault(szCall, EBUSY);
        const int nResult = pfnEvent(nullptr, 1, 2, 3, 4, static_cast<unsigned long>(m_nLogin));
        const int nRefused = pfnEvent(nullptr, 1, 2, 3, 4, 999) + pfnEvent(nullptr, 1, 2, 3, 4, 1000);
        EXPECT_TRUE(nResult == 0 && nRefused == 2);
        EXPECT_EQ(std::exchange(g_nHeard, 0), nHeard);
    }
    const CInterposed tFault("pthread_mutex_lock", EAGAIN);
    EXPECT_EQ(ClientAdapter_SubscribeEvent(m_nLogin, 1, fnOnEvent, 0), 3);
}

TEST_F(Platform, CreatedTwice)
{
    CMutex tMutex;
    CSignal tSignal;
    for (auto const& strLines :
         {std::string(), Line("Mutex", "create", 122, "Warning") + Line("Signal", "create", 103, "Warning")})
    {
        EXPECT_EQ(tMutex.create(), 0);
        EXPECT_EQ(tSignal.create(), 0);
        EXPECT_EQ(m_tCapture.Text(), strLines);
        EXPECT_EQ(tSignal.signal(), 0);
    }
    EXPECT_EQ(tSignal.create(), 0);
    EXPECT_EQ(tSignal.wait(0), 9) << "created anew, it isn't signalled";
}

// --- locks and signals -----------------------------------------------------------------------------------------------

TEST_F(Platform, MutexIsRecursive)
{
    CCreated<CMutex> tMutex;
    const auto fnTry = [&]
    {
        const int nResult = tMutex.trylock();
        return nResult == 0 ? tMutex.unlock() : nResult;
    };
    const auto Elsewhere = [&] { return OnAnotherThread(fnTry); };
    EXPECT_EQ(tMutex.lock() + tMutex.lock() + tMutex.trylock(), 0);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(Elsewhere(), 9);
        EXPECT_EQ(tMutex.unlock(), 0);
    }
    EXPECT_EQ(Elsewhere(), 0);
    EXPECT_EQ(m_tCapture.Text(), "");
    EXPECT_EQ(tMutex.unlock(), 1);
    EXPECT_EQ(m_tCapture.Text(), ErrorLine("Mutex unlock 201", EPERM));
    CMutex tAssigned;
    EXPECT_EQ(&(tAssigned = tMutex), &tAssigned);
    EXPECT_EQ(tAssigned.lock(), 1) << "assignment changes nothing";
}

TEST_F(Platform, GuardUnlocksWhatItLocked)
{
    CCreated<CMutex> tMutex;
    const auto IsFree = [&] { return OnAnotherThread([&] { return tMutex.trylock() == 0 && tMutex.unlock() == 0; }); };
    {
        const CGuard tGuard(&tMutex);
        {
            const CGuard tCopy(tGuard);
            EXPECT_FALSE(IsFree());
        }
        EXPECT_FALSE(IsFree()) << "the copy unlocked its own lock only";
        {
            const CInterposed tFault("pthread_mutex_lock", EAGAIN);
            const CGuard tFailed(tGuard);
        }
        EXPECT_FALSE(IsFree()) << "a copy that could not lock unlocks nothing";
        CCreated<CMutex> tOther;
        {
            CGuard tAssigned(&tOther);
            EXPECT_EQ(&(tAssigned = tGuard), &tAssigned);
        }
        EXPECT_FALSE(IsFree());
        EXPECT_EQ(OnAnotherThread([&] { return tOther.trylock() == 0 ? tOther.unlock() : 9; }), 0);
    }
    EXPECT_TRUE(IsFree());
    m_tCapture.Text();
    CMutex tNotCreated;
    {
        const CGuard tGuard(&tNotCreated);
    }
    EXPECT_EQ(m_tCapture.Text(), Line("Mutex", "lock", 158) + Line("Mutex", "unlock", 196));
}

TEST_F(Platform, SignalReleasesOneWaitEach)
{
    CCreated<CSignal> tSignal;
    EXPECT_EQ(tSignal.wait(0), 9);
    EXPECT_EQ(tSignal.signal() + tSignal.signal(), 0);
    EXPECT_EQ(tSignal.wait(10), 0);
    EXPECT_EQ(tSignal.wait(0), 9) << "signals don't add up";
    for (const unsigned long dwTimeout : {CSignal::Infinite, 600'000UL}) // whether or not the waiter waits already
    {
        auto tWaiter = std::async(std::launch::async, [&] { return tSignal.wait(dwTimeout); });
        EXPECT_EQ(tSignal.signal(), 0);
        EXPECT_EQ(tWaiter.get(), 0);
    }
    EXPECT_EQ(m_tCapture.Text(), "");
    tSignal.signal();
    CSignal tCopy(tSignal);
    EXPECT_EQ(tCopy.create(), 0);
    EXPECT_EQ(tCopy.wait(0), 9);
    EXPECT_EQ((tCopy = tSignal).wait(0), 9);
    tCopy.destroy();
}

TEST_F(Platform, SignalDeadline)
{
    CCreated<CSignal> tSignal;
    const auto Check = [&](timeval tNow, unsigned long dwMilliseconds, timespec tDeadline)
    {
        CInterposed tClock(tNow);
        EXPECT_EQ(tSignal.wait(dwMilliseconds), 9);
        EXPECT_EQ(tClock.tDeadline.tv_sec, tDeadline.tv_sec);
        EXPECT_EQ(tClock.tDeadline.tv_nsec, tDeadline.tv_nsec);
    };
    Check({100, 999'999}, 999, {101, 998'999'000});
    Check({100, 0}, 0, {100, 0});
    Check({100, 500'000}, 1500, {102, 0});
    Check({7, 1}, 4294967294, {4294974, 294'001'000});
}

// --- files -----------------------------------------------------------------------------------------------------------

TEST_F(Platform, FileWritesAndReads)
{
    const CTemporaryPath tPath("file");
    CFile tFile;
    ASSERT_EQ(tFile.create(tPath.Path(), "w+"), 0);
    EXPECT_EQ(tFile.write("abcdefgh", 2, 4), 4);
    EXPECT_EQ(tFile.flush(), 0);
    EXPECT_EQ(std::filesystem::file_size(tPath.Path()), 8U);
    EXPECT_EQ(tFile.seek(0, SEEK_SET), 0);
    EXPECT_EQ(tFile.eof(), 1);
    std::array<char, 16> achText{};
    EXPECT_EQ(tFile.read(achText.data(), 3, 5), 2) << "whole items";
    EXPECT_STREQ(achText.data(), "abcdefgh");
    EXPECT_EQ(tFile.eof(), 0);
    EXPECT_EQ(tFile.seek(static_cast<unsigned long>(-3), SEEK_END), 0) << "offsets have a sign";
    EXPECT_EQ(tFile.read(achText.data(), 1, 1), 1);
    EXPECT_EQ(achText[0], 'f');
    EXPECT_EQ(tFile.seek(0x80000000UL, SEEK_SET), -1) << "negative as a signed 32-bit number";
    EXPECT_EQ(tFile.destroy() + tFile.destroy(), 0);
    EXPECT_EQ(m_tCapture.Text(), "");
}

TEST_F(Platform, FileCopiesNameOneStream)
{
    const CTemporaryPath tPath("file");
    CFile tFile;
    ASSERT_EQ(tFile.create(tPath.Path(), "w"), 0);
    CFile tCopy(tFile);
    CFile tAssigned;
    EXPECT_EQ(&(tAssigned = tFile), &tAssigned);
    EXPECT_EQ(tAssigned.write("x", 1, 1), 1) << "assignment changes nothing";
    EXPECT_EQ(m_tCapture.Text(), Line("File", "write", 68));
    EXPECT_EQ(tCopy.write("ab", 1, 2), 2);
    ASSERT_EQ(tFile.create(tPath.Path(), "r"), 0) << "another stream, the copy keeps the first";
    EXPECT_EQ(tCopy.destroy(), 0);
    std::array<char, 4> achText{};
    EXPECT_EQ(tFile.read(achText.data(), 1, 4), 2);
    EXPECT_STREQ(achText.data(), "ab");
    EXPECT_EQ(tFile.destroy(), 0);
}

TEST_F(Platform, FileThatIsNotOpen)
{
    CFile tFile;
    char chByte = 'x';
    EXPECT_EQ(tFile.read(&chByte, 1, 1) + tFile.write(&chByte, 1, 1), 2);
    EXPECT_EQ(tFile.eof() + tFile.destroy(), 0);
    EXPECT_EQ(m_tCapture.Text(), Line("File", "read", 57) + Line("File", "write", 68) + Line("File", "eof", 79));
    EXPECT_EQ(tFile.seek(0, SEEK_SET), -1);
    EXPECT_EQ(std::exchange(errno, 0), EBADF);
    EXPECT_EQ(tFile.flush(), EOF);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(tFile.create("/dev/full", "w") + tFile.flush(), 0);
    EXPECT_EQ(tFile.write("x", 1, 1), 1);
    EXPECT_EQ(tFile.flush(), EOF);
    EXPECT_EQ(std::exchange(errno, 0) + tFile.destroy(), ENOSPC);
    EXPECT_EQ(tFile.create(nullptr, "r") + tFile.create("/nowhere/nothing", "r") + tFile.create("/dev/null", nullptr) +
                  tFile.create("/dev/null", "?"),
              4);
    EXPECT_EQ(m_tCapture.Text(), Line("File", "create", 29) + ErrorLine("File create 35", ENOENT) +
                                     ErrorLine("File create 35", EINVAL) + ErrorLine("File create 35", EINVAL));
}

// --- system utilities ------------------------------------------------------------------------------------------------

TEST_F(Platform, UtilityFiles)
{
    const CTemporaryPath tPath("file");
    const CTemporaryPath tLink("link");
    std::ofstream(tPath.Path()) << "12345";
    std::filesystem::create_symlink(tPath.Path(), tLink.Path());
    unsigned long long ullSize = 0;
    EXPECT_EQ(CUtility::GetFileSize(tPath.Path(), ullSize), 0);
    EXPECT_EQ(ullSize, 5U);
    EXPECT_EQ(CUtility::GetFileSize(tLink.Path(), ullSize), 0);
    EXPECT_EQ(ullSize, std::strlen(tPath.Path())) << "the link, not what it points to";
    EXPECT_EQ(CUtility::RemoveFile(tLink.Path()), 0);
    EXPECT_EQ(m_tCapture.Text(), "");
    ullSize = 77;
    EXPECT_EQ(CUtility::RemoveFile(tLink.Path()), 1);
    EXPECT_EQ(CUtility::GetFileSize(nullptr, ullSize), 1);
    EXPECT_EQ(CUtility::GetFileSize(tLink.Path(), ullSize), 1);
    EXPECT_EQ(ullSize, 77U);
    EXPECT_EQ(m_tCapture.Text(), ErrorLine("Utility RemoveFile 98", ENOENT) + Line("Utility", "GetFileSize", 108) +
                                     ErrorLine("Utility GetFileSize_Linux 126", ENOENT));
}

TEST_F(Platform, UtilityCalendarTime)
{
    const auto TimeAt = [](timeval tNow)
    {
        const CInterposed tClock(tNow);
        tagAbsoluteTime tTime{};
        EXPECT_EQ(CUtility::GetSystemTime(tTime), 0);
        return std::array{tTime.wYear, tTime.wMonth,  tTime.wDayOfWeek, tTime.wDay,
                          tTime.wHour, tTime.wMinute, tTime.wSecond,    tTime.wMilliseconds};
    };
    using Fields = std::array<std::uint16_t, 8>;
    EXPECT_EQ(TimeAt({1'704'067'205, 999'999}), (Fields{2024, 1, 1, 1, 0, 0, 5, 0}));
    EXPECT_EQ(TimeAt({951'782'399, 0}), (Fields{2000, 2, 1, 28, 23, 59, 59, 0}));
    EXPECT_EQ(TimeAt({0, 0}), (Fields{1970, 1, 4, 1, 0, 0, 0, 0}));
    static_assert(sizeof(tagAbsoluteTime) == 16);
    if constexpr (sizeof(time_t) > 4)
    {
        const CInterposed tClock(timeval{std::numeric_limits<time_t>::max(), 0}); // no such year
        tagAbsoluteTime tTime{1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(CUtility::GetSystemTime(tTime), 1);
        EXPECT_EQ(tTime.wYear, 1);
    }
}

TEST_F(Platform, UtilityTicks)
{
    CUtility tUtility;
    const auto Check = [&](timeval tNow, std::uint32_t dwTick, std::uint32_t dwElapsed)
    {
        const CInterposed tClock(tNow);
        EXPECT_EQ(CUtility::GetTickCount(), dwTick);
        EXPECT_EQ(tUtility.GetTickExpend(), dwElapsed);
    };
    Check({4'294'966, 999'999}, 4'294'966'999, 0);
    Check({4'294'967, 300'000}, 4, 301);
    Check({1'704'067'205, 0}, 3'260'155'784, 3'260'155'780);
}

TEST_F(Platform, UtilityTheRest)
{
    {
        CInterposed tClock(timeval{});
        EXPECT_EQ(CUtility::Sleep(1500), 0) << "also when a signal ends it";
        EXPECT_EQ(tClock.tSlept.tv_sec * 1'000'000 + tClock.tSlept.tv_usec, 1'500'000);
    }
    errno = 42;
    EXPECT_EQ(CUtility::GetSystemError(), 42);
    EXPECT_EQ(CUtility::GetCurrentProcessID(), getpid());
    EXPECT_EQ(OnAnotherThread(&CUtility::GetCurrentThreadID), getpid());

    unsigned long dwLength = 7;
    unsigned long long ullSize = 7;
    tagAbsoluteTime tTime{7, 7, 7, 7, 7, 7, 7, 7};
    EXPECT_EQ(CUtility::GetHttpContent("http://127.0.0.1/", nullptr, dwLength), 1);
    EXPECT_EQ(CUtility::GetFileSize_Window("/", ullSize) + CUtility::GetSystemError_Windows() +
                  CUtility::GetSystemTime_Windows(tTime) + CUtility::Sleep_Windows(100'000'000) +
                  CUtility::GetHttpContent_Windows("", nullptr, dwLength) + CUtility::GetCurrentThreadID_Windows() +
                  CUtility::GetCurrentProcessID_Windows() + static_cast<int>(CUtility::GetTickCount_Windows()),
              0);
    EXPECT_TRUE(dwLength == 7 && ullSize == 7 && tTime.wYear == 7);
}

// --- buffers ---------------------------------------------------------------------------------------------------------

class COwnedBuffer : public CAdapta_Buffer
{
public:
    explicit COwnedBuffer(std::string const& strBytes = "")
    {
        if (!strBytes.empty())
        {
            EXPECT_EQ(Create(strBytes.size()), 0);
            EXPECT_EQ(Copy(reinterpret_cast<unsigned char const*>(strBytes.data()), strBytes.size()), 0);
        }
    }
    explicit COwnedBuffer(CAdapta_Buffer const& tOther) : CAdapta_Buffer(tOther) {}
    ~COwnedBuffer() override { Destroy(); }
    using CAdapta_Buffer::operator=;
    std::string Bytes() const { return {reinterpret_cast<char const*>(Buffer()), Length()}; }
};

TEST_F(Platform, BufferLifeOfAnArray)
{
    COwnedBuffer tBuffer;
    const auto fnIs = [&](unsigned long dwLength, unsigned long dwPosition)
    { return tBuffer.Length() == dwLength && tBuffer.Position() == dwPosition; };
    EXPECT_TRUE(tBuffer.BufferNull() && fnIs(0, 0));
    EXPECT_EQ(tBuffer.Create(4) + tBuffer.SetPosition(100), 0);
    EXPECT_TRUE(fnIs(4, 100));
    EXPECT_EQ(tBuffer.ResetLength(), 0);
    EXPECT_TRUE(fnIs(4, 0));
    tBuffer.SetPosition(3);
    EXPECT_EQ(tBuffer.Recreate(8), 0) << "the old array is released: the leak check would tell";
    EXPECT_TRUE(fnIs(8, 0));
    const std::unique_ptr<unsigned char[]> pbyHeld(tBuffer.Buffer());
    EXPECT_EQ(tBuffer.Create(2), 0) << "the old array is not released";
    pbyHeld[7] = 1;
    auto* const pbyGiven = new unsigned char[3]{'a', 'b', 'c'};
    tBuffer.SetPosition(1);
    EXPECT_EQ(tBuffer.Consign(pbyGiven, 3), 0);
    EXPECT_TRUE(static_cast<unsigned char*>(tBuffer) == pbyGiven && static_cast<unsigned long>(tBuffer) == 3);
    tBuffer[2] = 'C';
    EXPECT_TRUE(tBuffer.Bytes() == "abC" && fnIs(3, 0));
    EXPECT_EQ(tBuffer.Destroy() + tBuffer.Destroy(), 0);
    EXPECT_TRUE(tBuffer.BufferNull() && fnIs(0, 0));
    const auto pbyAdopted = std::make_unique<unsigned char[]>(2);
    CAdapta_Buffer tAdopted(pbyAdopted.get(), 2);
    EXPECT_EQ(tAdopted.Length(), 2U);
    EXPECT_EQ(tAdopted.Initialize(), 0);
    EXPECT_TRUE(tAdopted.BufferNull());
    EXPECT_EQ(m_tCapture.Text(), "");
}

TEST_F(Platform, BufferRefuses)
{
    COwnedBuffer tBuffer("abcd");
    COwnedBuffer tEmpty;
    unsigned char abyBytes[8] = "1234567";
    EXPECT_EQ(tBuffer.CheckValid(tBuffer.Buffer()) + tBuffer.CheckValid(tBuffer.Buffer() + 4), 0);
    EXPECT_EQ(tBuffer.Paste(abyBytes, 4), 0);
    EXPECT_EQ(m_tCapture.Text(), "");
    const auto Refused = [&](int nResult, char const* szFunction, int nLine)
    {
        EXPECT_EQ(nResult, 1);
        EXPECT_EQ(m_tCapture.Text(), Line("Buffer", szFunction, nLine));
    };
    Refused(tBuffer.CheckValid(nullptr), "CheckValid", 246);
    Refused(tBuffer.CheckValid(tBuffer.Buffer() - 1), "CheckValid", 253);
    Refused(tBuffer.CheckValid(tBuffer.Buffer() + 5), "CheckValid", 253);
    Refused(tBuffer.Copy(abyBytes, 5), "Copy", 365);
    Refused(COwnedBuffer().Copy(abyBytes, 0), "Copy", 365);
    Refused(tBuffer.Paste(abyBytes, 5), "Paste", 389);
    Refused(tEmpty.Paste(abyBytes, 0), "Paste", 389);
    EXPECT_EQ(tBuffer.Bytes(), "abcd");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(abyBytes)), "abcd567");
    unsigned char* const pbyArray = tBuffer.Buffer();
    Refused(tBuffer.Create(ULONG_MAX), "Create", 91);
    EXPECT_TRUE(tBuffer.Buffer() == pbyArray && tBuffer.Length() == 0);
}

// A buffer of somebody else's making that fails where it is told to.
class CForeignBuffer : public COwnedBuffer
{
public:
    CForeignBuffer(bool bCreates, bool bHasArray)
        : COwnedBuffer("foreign"), m_bCreates(bCreates), m_bHasArray(bHasArray)
    {
    }
    int Create(unsigned long dwSize) override { return m_bCreates ? COwnedBuffer::Create(dwSize) : 1; }
    unsigned char* Buffer() const override { return m_bHasArray ? COwnedBuffer::Buffer() : nullptr; }

private:
    bool m_bCreates;
    bool m_bHasArray;
};

TEST_F(Platform, BufferClones)
{
    const COwnedBuffer tSource("source");
    COwnedBuffer tEmpty;
    COwnedBuffer tHollow;
    EXPECT_EQ(tHollow.Create(0), 0);
    CForeignBuffer tCantCreate(false, true);
    CForeignBuffer tCantShow(true, false);
    CForeignBuffer tGood(true, true);
    COwnedBuffer tTarget("old");
    tTarget.SetPosition(2);
    EXPECT_EQ(tSource.Clone(&tGood), 0);
    EXPECT_EQ(tEmpty.Clone(&tGood, &tTarget), 0);
    EXPECT_EQ(tTarget.Bytes(), "source");
    EXPECT_EQ(tTarget.Position(), 0U);
    EXPECT_NE(tTarget.Buffer(), tGood.Buffer());
    EXPECT_EQ(m_tCapture.Text(), "");

    EXPECT_EQ(tTarget.Clone(&tTarget), 1);
    EXPECT_EQ(m_tCapture.Text(), Line("Buffer", "Clone", 137));
    EXPECT_EQ(tTarget.Bytes(), "source");
    const auto Refused = [&](IBuffer const* pSource, IBuffer* pTarget, int nLine)
    {
        EXPECT_EQ(tSource.Clone(pSource, pTarget), 1);
        EXPECT_EQ(m_tCapture.Text(), Line("Buffer", "Clone", nLine));
        EXPECT_TRUE(!pTarget || nLine == 194 || pTarget->BufferNull()) << "the target has lost its bytes";
    };
    Refused(&tSource, nullptr, 156);
    Refused(&tEmpty, &tTarget, 166);
    Refused(nullptr, &tGood, 166);
    Refused(&tHollow, &tGood, 176);
    Refused(&tSource, &tCantCreate, 183);
    Refused(&tSource, &tCantShow, 194);
}

TEST_F(Platform, BufferCopiesAndCompares)
{
    COwnedBuffer tFirst("bytes");
    tFirst.SetPosition(4);
    COwnedBuffer tCopy(tFirst);
    EXPECT_TRUE(tCopy == tFirst && tCopy.Buffer() != tFirst.Buffer() && tCopy.Position() == 0);
    tCopy = COwnedBuffer("other");
    EXPECT_EQ(tCopy.Bytes(), "other");
    EXPECT_FALSE(tCopy == tFirst);
    EXPECT_FALSE(COwnedBuffer("byte").Compare(tFirst));
    EXPECT_EQ(m_tCapture.Text(), "");

    COwnedBuffer const& tSame = tFirst;
    EXPECT_EQ(&(tFirst = tSame), &tFirst);
    EXPECT_EQ(m_tCapture.Text(), Line("Buffer", "operator=", 42));
    EXPECT_TRUE(tFirst.Bytes() == "bytes" && tFirst.Position() == 4);
    COwnedBuffer tEmpty;
    EXPECT_FALSE(tEmpty == tFirst);
    EXPECT_FALSE(tFirst == tEmpty);
    EXPECT_EQ(m_tCapture.Text(), Line("Buffer", "Compare", 430) + Line("Buffer", "Compare", 430));
    const COwnedBuffer tFromEmpty(tEmpty);
    tFirst = tEmpty;
    EXPECT_TRUE(tFromEmpty.BufferNull() && tFirst.BufferNull());
    const std::string strBoth = Line("Buffer", "Clone", 166) + Line("Buffer", "operator=", 42);
    EXPECT_EQ(m_tCapture.Text(), strBoth + strBoth);
}
} // namespace

#include "adapter/HandleRegistry.h"

#include "adapter/LookUp.h"
#include "system/Lock.h"

#include <algorithm>
#include <atomic>
#include <cstddef>

namespace Adapter_ApplicationLayer
{
namespace
{
constexpr int g_nFree = 1;
constexpr int g_nUsed = 2;

// One of the two tables, taken apart: they are alike.
struct tagTable
{
    tagResource* atRecord;
    int* anState;
    int& nCursor;
    pthread_mutex_t& tMutex;
    tagLookUp* atLookUp; // null: not g_cClient
};

tagTable Users(Client& tClient)
{
    return {tClient.m_stUser, tClient.m_nUserState, tClient.m_nUserCursor, tClient.m_mtxUser,
            &tClient == &g_cClient ? g_atUserLookUp : nullptr};
}

tagTable Media(Client& tClient)
{
    return {tClient.m_stMedia, tClient.m_nMediaState, tClient.m_nMediaCursor, tClient.m_mtxMedia,
            &tClient == &g_cClient ? g_atMediaLookUp : nullptr};
}

// From the cursor up; then once more from slot 1: a search that doesn't begin at slot 0 never takes it.
int FirstFree(tagTable const& tTable)
{
    for (const int nFirst : {tTable.nCursor, 1})
    {
        for (int nID = nFirst; nID < Client::nSlots; ++nID)
        {
            if (tTable.anState[nID] == g_nFree)
            {
                return nID;
            }
        }
    }
    return -1;
}

template <class F>
int Allocate(tagTable const& tTable, int& nID, F fnStore)
{
    const CLock tLock(tTable.tMutex);
    const int nFound = FirstFree(tTable);
    if (nFound < 0)
    {
        return 0;
    }
    tagResource& tRecord = tTable.atRecord[nFound];
    tagLookUp tUnused;
    tagLookUp& tLookUp = tTable.atLookUp ? tTable.atLookUp[nFound] : tUnused;
    tLookUp.tSequence.BeginWrite();
    fnStore(tRecord);
    CSequence::Store(tLookUp.eType, tRecord.eType);
    CSequence::Store(tLookUp.hHandle, tRecord.hHandle);
    std::atomic_ref(tTable.anState[nFound]).store(g_nUsed, std::memory_order_release);
    tLookUp.tSequence.EndWrite();
    nID = nFound;
    tTable.nCursor = (nFound + 1) % Client::nSlots;
    return 0;
}

int AllocateTarget(tagTable const& tTable, int& nID, void* hHandle, eProtocolType eType)
{
    return Allocate(tTable, nID,
                    [&](tagResource& tRecord)
                    {
                        CSequence::Store(tRecord.eType, eType);
                        CSequence::Store(tRecord.hHandle, hHandle);
                    });
}

int Copy(tagTable const& tTable, int nID, tagResource& tRecord)
{
    if (static_cast<unsigned>(nID) >= Client::nSlots)
    {
        return 1;
    }
    int nState = g_nFree;
    tagResource tCopy;
    const auto fnCopy = [&]
    {
        tagResource const& tSource = tTable.atRecord[nID];
        nState = std::atomic_ref(tTable.anState[nID]).load(std::memory_order_acquire);
        tCopy.eType = CSequence::Load(tSource.eType);
        tCopy.hHandle = CSequence::Load(tSource.hHandle);
        tCopy.hStream = CSequence::Load(tSource.hStream);
        std::transform(std::begin(tSource.byProtocolData), std::end(tSource.byProtocolData), tCopy.byProtocolData,
                       [](unsigned char const& by) { return CSequence::Load(by); });
    };
    bool bWhole = true;
    if (tTable.atLookUp)
    {
        bWhole = tTable.atLookUp[nID].tSequence.TryRead(fnCopy); // else it is free, or was a moment ago
    }
    else
    {
        fnCopy();
    }
    if (!bWhole || nState != g_nUsed)
    {
        return 1;
    }
    tRecord = tCopy;
    return 0;
}

void MarkFree(tagTable const& tTable, int nID)
{
    CSequence::Store(tTable.anState[nID], g_nFree);
    if (tTable.atLookUp)
    {
        tTable.atLookUp[nID].tSequence.BeginWrite(); // ended by the next allocation
    }
}

int Free(tagTable const& tTable, int nID)
{
    const CLock tLock(tTable.tMutex);
    if (static_cast<unsigned>(nID) < Client::nSlots)
    {
        MarkFree(tTable, nID);
    }
    return 0;
}
} // namespace

constinit tagLookUp g_atUserLookUp[Client::nSlots];
constinit tagLookUp g_atMediaLookUp[Client::nSlots];

Client::Client() : m_nUserCursor(0), m_nMediaCursor(0)
{
    std::fill(std::begin(m_nUserState), std::end(m_nUserState), g_nFree);
    std::fill(std::begin(m_nMediaState), std::end(m_nMediaState), g_nFree);
    pthread_mutex_init(&m_mtxUser, nullptr);
    pthread_mutex_init(&m_mtxMedia, nullptr);
}

// A process may end while plug-in threads still look IDs up, open and close: they find every slot free. The mutexes
// hold nothing that must be given back, and stay for those threads.
Client::~Client()
{
    for (tagTable const& tTable : {Users(*this), Media(*this)})
    {
        const CLock tLock(tTable.tMutex);
        for (int nID = 0; nID < nSlots; ++nID)
        {
            MarkFree(tTable, nID);
        }
        tTable.nCursor = 0;
    }
}

int Client::SetUserType(int& nID, void* hHandle, eProtocolType eType)
{
    return AllocateTarget(Users(*this), nID, hHandle, eType);
}

int Client::SetUserType(int& nID, tagResource tRecord)
{
    return Allocate(Users(*this), nID,
                    [&](tagResource& tTarget)
                    {
                        CSequence::Store(tTarget.eType, tRecord.eType);
                        CSequence::Store(tTarget.hHandle, tRecord.hHandle);
                        CSequence::Store(tTarget.hStream, tRecord.hStream);
                        for (std::size_t i = 0; i < sizeof tTarget.byProtocolData; ++i)
                        {
                            CSequence::Store(tTarget.byProtocolData[i], tRecord.byProtocolData[i]);
                        }
                    });
}

int Client::GetUserType(int nID, tagResource& tRecord)
{
    return Copy(Users(*this), nID, tRecord);
}

int Client::DeleteUserType(int nID)
{
    return Free(Users(*this), nID);
}

int Client::SetMeidaType(int& nID, void* hHandle, eProtocolType eType)
{
    return AllocateTarget(Media(*this), nID, hHandle, eType);
}

int Client::GetMediaType(int nID, tagResource& tRecord)
{
    return Copy(Media(*this), nID, tRecord);
}

int Client::DeleteMediaType(int nID)
{
    return Free(Media(*this), nID);
}

void UpdateUser(int nID, void* tagResource::*pField, void* hValue)
{
    const tagTable tTable = Users(g_cClient);
    const CLock tLock(tTable.tMutex);
    if (static_cast<unsigned>(nID) < Client::nSlots && tTable.anState[nID] == g_nUsed)
    {
        CSequence::Store(tTable.atRecord[nID].*pField, hValue);
        CSequence::Store(tTable.atLookUp[nID].hHandle, tTable.atRecord[nID].hHandle);
    }
}
} // namespace Adapter_ApplicationLayer

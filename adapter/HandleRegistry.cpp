#include "adapter/HandleRegistry.h"

#include <algorithm>
#include <cstddef>

namespace Adapter_ApplicationLayer
{
namespace
{
constexpr int g_nFree = 1;
constexpr int g_nUsed = 2;

static_assert(offsetof(tagResource, byProtocolData) == 4 + (sizeof(void*) - 4) + 2 * sizeof(void*), "tagResource");
static_assert(sizeof(tagResource) == (sizeof(void*) == 4 ? 616 : 632), "tagResource");

class CLock
{
public:
    explicit CLock(pthread_mutex_t& tMutex) : m_tMutex(tMutex) { pthread_mutex_lock(&m_tMutex); }
    ~CLock() { pthread_mutex_unlock(&m_tMutex); }
    CLock(CLock const&) = delete;
    CLock& operator=(CLock const&) = delete;

private:
    pthread_mutex_t& m_tMutex;
};

// One of the two tables, taken apart: they are alike.
struct tagTable
{
    tagResource* atRecord;
    int* anState;
    int& nCursor;
    pthread_mutex_t& tMutex;
    Client::tagLookUp* atLookUp;
};

tagTable Users(Client& tClient)
{
    return {tClient.m_stUser, tClient.m_nUserState, tClient.m_nUserCursor, tClient.m_mtxUser, tClient.m_tUserLookUp};
}

tagTable Media(Client& tClient)
{
    return {tClient.m_stMedia, tClient.m_nMediaState, tClient.m_nMediaCursor, tClient.m_mtxMedia,
            tClient.m_tMediaLookUp};
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
    if (nFound >= 0)
    {
        tagResource& tRecord = tTable.atRecord[nFound];
        Client::tagLookUp& tLookUp = tTable.atLookUp[nFound];
        tLookUp.tSequence.BeginWrite();
        CSequence::Store(tTable.anState[nFound], g_nUsed);
        fnStore(tRecord);
        CSequence::Store(tLookUp.nType, static_cast<std::int32_t>(tRecord.eType));
        CSequence::Store(tLookUp.hHandle, tRecord.hHandle);
        tLookUp.tSequence.EndWrite();
        nID = nFound;
        tTable.nCursor = (nFound + 1) % Client::nSlots;
    }
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
    const bool bWhole = tTable.atLookUp[nID].tSequence.TryRead(
        [&]
        {
            tagResource const& tSource = tTable.atRecord[nID];
            nState = CSequence::Load(tTable.anState[nID]);
            tCopy.eType = CSequence::Load(tSource.eType);
            tCopy.hHandle = CSequence::Load(tSource.hHandle);
            tCopy.hStream = CSequence::Load(tSource.hStream);
            std::transform(std::begin(tSource.byProtocolData), std::end(tSource.byProtocolData), tCopy.byProtocolData,
                           [](unsigned char const& by) { return CSequence::Load(by); });
        });
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
    CSequence::Store(tTable.atLookUp[nID].nType, Client::tagLookUp::nFree);
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

void Client::UpdateUser(int nID, void* tagResource::*pField, void* hValue)
{
    const tagTable tTable = Users(*this);
    const CLock tLock(tTable.tMutex);
    if (static_cast<unsigned>(nID) < nSlots && tTable.anState[nID] == g_nUsed)
    {
        CSequence::Store(tTable.atRecord[nID].*pField, hValue);
        CSequence::Store(tTable.atLookUp[nID].hHandle, tTable.atRecord[nID].hHandle);
    }
}
} // namespace Adapter_ApplicationLayer

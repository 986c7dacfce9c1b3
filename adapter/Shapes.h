#pragma once

// The shapes of the exported functions: how an ID becomes a protocol and a handle, how the call reaches the protocol
// set, and what comes back. One function each; included by ClientAdapter.cpp alone, whose rows choose among them.

#include "adapter/Globals.h"
#include "adapter/LookUp.h"
#include "system/OutputMessage.h"

namespace
{
using Adapter_ApplicationLayer::Client;
using Adapter_ApplicationLayer::FindMedia;
using Adapter_ApplicationLayer::FindUser;
using Adapter_ApplicationLayer::tagTarget;
using Adapter_ProtocolSet::CClientProtocolSet;

constexpr char g_szSource[] = "ClientAdapter.cpp";

/// An exported function's name and the fixed number of its "Failed" line.
struct tagSite
{
    char const* szFunction;
    int nLine;
};

[[gnu::cold, gnu::noinline]] int Failed(tagSite tSite, int nResult)
{
    DiagnosticLine(g_szSource, tSite.szFunction, tSite.nLine);
    return nResult;
}

/// On an open login.
template <class F, class... A>
int OnLogin(tagSite tSite, F fnOperation, int nLoginID, A... tArguments)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin)) [[unlikely]]
    {
        return Failed(tSite, eResultUnknownLogin);
    }
    return fnOperation(tLogin.hHandle, tArguments..., tLogin.eType);
}

/// On an open login, asking about it: a negative answer is 3, any other 0.
template <class F, class... A>
int AskLogin(tagSite tSite, F fnOperation, int nLoginID, A... tArguments)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin)) [[unlikely]]
    {
        return Failed(tSite, eResultUnknownLogin);
    }
    return fnOperation(tLogin.hHandle, tArguments..., tLogin.eType) < 0 ? eResultUnknownLogin : eResultOk;
}

/// On an open media connection.
template <class F, class... A>
int OnMedia(tagSite, F fnOperation, int nMediaID, A... tArguments)
{
    tagTarget tMedia;
    if (!FindMedia(nMediaID, tMedia)) [[unlikely]]
    {
        return eResultUnknownMedia;
    }
    return fnOperation(tMedia.hHandle, tArguments..., tMedia.eType);
}

/// On two open media connections of one protocol: the second one's handle goes along with the first's.
template <class F>
int OnTwoMedia(tagSite, F fnOperation, int nMediaID, int nOtherID)
{
    tagTarget tMedia;
    tagTarget tOther;
    if (!FindMedia(nMediaID, tMedia) || !FindMedia(nOtherID, tOther)) [[unlikely]]
    {
        return eResultUnknownMedia;
    }
    return fnOperation(tMedia.hHandle, tOther.hHandle, tMedia.eType);
}

/// What the three shapes of opening share. The plug-in gets a handle variable of the library's own.
template <class F, class... A>
int OpenOn(tagTarget const& tParent, bool bAlsoWhenFailed, F fnOperation, int* pnMediaID, A... tArguments)
{
    void* hMedia = nullptr;
    const int nResult = fnOperation(&hMedia, tParent.hHandle, tArguments..., tParent.eType);
    if (nResult == eResultOk || bAlsoWhenFailed)
    {
        int nNew = -1;
        g_cClient.SetMeidaType(nNew, hMedia, tParent.eType);
        *pnMediaID = nNew;
    }
    return nResult;
}

/// Opens a connection under a login and takes a media ID for it, but not when the plug-in fails.
template <class F, class... A>
int OpenUnlessFailed(tagSite tSite, F fnOperation, int* pnMediaID, int nLoginID, A... tArguments)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin)) [[unlikely]]
    {
        return Failed(tSite, eResultUnknownLogin);
    }
    return OpenOn(tLogin, false, fnOperation, pnMediaID, tArguments...);
}

/// Opens a connection under a login and takes a media ID for it, whatever the plug-in answers.
template <class F, class... A>
int Open(tagSite tSite, F fnOperation, int* pnMediaID, int nLoginID, A... tArguments)
{
    tagTarget tLogin;
    if (!FindUser(nLoginID, tLogin)) [[unlikely]]
    {
        return Failed(tSite, eResultUnknownLogin);
    }
    return OpenOn(tLogin, true, fnOperation, pnMediaID, tArguments...);
}

/// The same under a media connection.
template <class F, class... A>
int OpenUnderMedia(tagSite, F fnOperation, int* pnMediaID, int nParentID, A... tArguments)
{
    tagTarget tParent;
    if (!FindMedia(nParentID, tParent)) [[unlikely]]
    {
        return eResultUnknownMedia;
    }
    return OpenOn(tParent, true, fnOperation, pnMediaID, tArguments...);
}

/// Closes a connection and frees its media ID, whatever the plug-in answers.
template <class F>
int Close(tagSite, F fnOperation, int nMediaID)
{
    tagTarget tMedia;
    if (!FindMedia(nMediaID, tMedia)) [[unlikely]]
    {
        return eResultUnknownMedia;
    }
    const int nResult = fnOperation(tMedia.hHandle, tMedia.eType);
    g_cClient.DeleteMediaType(nMediaID);
    return nResult;
}

/// On fixed protocols, one after the other, their answers unused.
template <class F, class... A>
int OnvifThenVtq(tagSite, F fnOperation, A... tArguments)
{
    fnOperation(tArguments..., eProtocolOnvif);
    fnOperation(tArguments..., eProtocolVTQ);
    return eResultOk;
}

template <class F, class... A>
int OnvifThenRtspThenVtq(tagSite, F fnOperation, A... tArguments)
{
    fnOperation(tArguments..., eProtocolOnvif);
    fnOperation(tArguments..., eProtocolRTSP);
    fnOperation(tArguments..., eProtocolVTQ);
    return eResultOk;
}

template <class F, class... A>
int OnRtsp(tagSite, F fnOperation, A... tArguments)
{
    return fnOperation(tArguments..., eProtocolRTSP);
}

/// Asks nobody.
template <class F, class... A>
int Nothing(tagSite, F, A...)
{
    return eResultOk;
}

/// On the protocol that the caller names last, with 0 as the channel.
template <class F, class... A>
int OnNamedProtocol(tagSite, F fnOperation, A... tArguments)
{
    return fnOperation(0, tArguments...);
}
} // namespace

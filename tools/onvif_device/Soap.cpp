// A SOAP request: from its envelope to its operation, and the answer's envelope.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/Schema.h"
#include "tools/onvif_device/Security.h"

namespace onvif_device
{
namespace
{
constexpr std::string_view g_strMediaType = "application/soap+xml";

// Answers are read by clients of any kind; these are what a request may hold at most.
constexpr int g_nMaxDepth = 64;

int DepthOf(pugi::xml_node tNode)
{
    int nMost = 0;
    for (const pugi::xml_node tChild : tNode.children())
    {
        nMost = std::max(nMost, DepthOf(tChild));
    }
    return nMost + 1;
}

pugi::xml_node OpenEnvelope(tagExchange const& tExchange, pugi::xml_document& tDocument)
{
    if (!tExchange.strContentType.starts_with(g_strMediaType))
    {
        throw CFault(eBlame::Sender, "ter:WellFormed", {}, "the content must be " + std::string(g_strMediaType));
    }
    if (!tDocument.load_buffer(tExchange.strBody.data(), tExchange.strBody.size()) || DepthOf(tDocument) > g_nMaxDepth)
    {
        throw CFault(eBlame::Sender, "ter:WellFormed", {}, "the request is no XML");
    }
    const pugi::xml_node tEnvelope = tDocument.document_element();
    if (LocalName(tEnvelope) != "Envelope" || NamespaceOf(tEnvelope) != UriOf("s"))
    {
        throw CFault(eBlame::VersionMismatch, {}, {}, "the request is no envelope of SOAP 1.2");
    }
    CheckElements(tEnvelope, "Header{...}? Body{...}", "s");
    return tEnvelope;
}

// What a header says that must be understood, and isn't.
void CheckHeader(pugi::xml_node tHeader)
{
    for (const pugi::xml_node tEntry : tHeader.children())
    {
        bool bMust = false;
        for (const pugi::xml_attribute tAttribute : tEntry.attributes())
        {
            if (LocalName(std::string_view(tAttribute.name())) == "mustUnderstand")
            {
                ParseBoolean(tAttribute.value(), bMust);
            }
        }
        const std::string strUri = NamespaceOf(tEntry);
        if (bMust && strUri != UriOf("wsse") && strUri != UriOf("wsa"))
        {
            throw CFault(eBlame::MustUnderstand, {}, {}, std::string(tEntry.name()) + " isn't understood");
        }
    }
}

// An address of a subscription belongs to the event service too.
bool StandsAt(eService eOf, tagExchange const& tExchange, tagQuirks const& tQuirks)
{
    tagService const* const ptService = ServiceAt(tExchange.strPath, tQuirks);
    return ptService ? ptService->eWhich == eOf
                     : eOf == eService::Events && tExchange.strPath.starts_with("/onvif/subscription/");
}

tagAction const& FindAction(pugi::xml_node tRequest, tagExchange const& tExchange, tagQuirks const& tQuirks,
                            eService& eOf)
{
    const std::string strName(LocalName(tRequest));
    tagAction const* const ptAction = FindAction(NamespaceOf(tRequest), strName, eOf);
    if (!ptAction || !StandsAt(eOf, tExchange, tQuirks) || IsWithout(tQuirks, strName) ||
        IsWithout(tQuirks, ServiceOf(eOf).szName))
    {
        FailAction("ter:ActionNotSupported", "there is no operation " + strName + " here");
    }
    return *ptAction;
}

// The response's element, or throws.
void Answer(CFace& tFace, tagExchange& tExchange, CXml& tXml)
{
    pugi::xml_document tDocument;
    const pugi::xml_node tEnvelope = OpenEnvelope(tExchange, tDocument);
    const pugi::xml_node tHeader = Child(tEnvelope, "Header");
    const pugi::xml_node tRequest =
        Child(tEnvelope, "Body").find_child([](pugi::xml_node t) { return t.type() == pugi::node_element; });
    CheckHeader(tHeader);
    const tagQuirks tQuirks = tFace.Quirks();
    eService eOf{};
    tagAction const& tAction = FindAction(tRequest, tExchange, tQuirks, eOf);
    if (!tExchange.bAuthenticated && tAction.dwLevel != 0)
    {
        Authenticate(tFace, tExchange, tHeader);
        RequireLevel(tFace, tExchange, tAction.dwLevel);
        tExchange.bAuthenticated = true;
    }
    const std::string_view strName = tAction.szName;
    const bool bPrefix = strName.find(':') != std::string_view::npos;
    const std::string strPrefix = bPrefix ? std::string(strName.substr(0, strName.find(':'))) : ServiceOf(eOf).szPrefix;
    CheckElements(tRequest, tAction.szElements, strPrefix.c_str());
    CCall tCall(tFace, tExchange, eOf, tHeader, tRequest, tXml);
    tXml.In(strPrefix + ':' + std::string(LocalName(strName)) + "Response", [&] { tAction.pfnServe(tCall); });
}

void Wrap(tagExchange& tExchange, CXml const& tBody)
{
    CXml tXml(tBody.IsOdd());
    tXml.Raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    tXml.In("s:Envelope", tXml.Declarations(), [&] { tXml.In("s:Body", [&] { tXml.Raw(tBody.Text()); }); });
    tExchange.strAnswer = tXml.Text();
}
} // namespace

void ServeSoap(CFace& tFace, tagExchange& tExchange)
{
    const tagQuirks tQuirks = tFace.Quirks();
    CXml tXml(tQuirks.bOddPrefixes);
    try
    {
        Answer(tFace, tExchange, tXml);
    }
    catch (tagNotYet const& tNotYet)
    {
        tExchange.llWaitUntilUs = tNotYet.llUntilUs;
        return;
    }
    catch (CFault const& tFault)
    {
        tXml = CXml(tQuirks.bOddPrefixes);
        tFault.Write(tXml);
        tExchange.nStatus = tExchange.bChallenge    ? 401
                            : tQuirks.llFaultStatus ? static_cast<unsigned>(tQuirks.llFaultStatus)
                                                    : tFault.Status();
    }
    Wrap(tExchange, tXml);
}
} // namespace onvif_device

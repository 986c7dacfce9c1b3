#include "tools/onvif_device/RtspSide.h"

#include "plugins/device/Device.h"
#include "tools/onvif_device/rtsp/RtspMount.h"

#include "protocol/interface/Live.h"

#include <atomic>
#include <cstdio>

#include <functional>
#include <gst/rtsp-server/rtsp-onvif-server.h>
#include <map>
#include <set>
#include <stdexcept>
#include <thread>

namespace onvif_device
{
namespace
{
constexpr char g_szRole[] = "user";

std::string LivePath(uint32_t dwChannel, uint32_t dwStreamKind)
{
    return "/live/" + std::to_string(dwChannel) + (dwStreamKind >= eStreamSub ? "/sub" : "/main");
}

std::string RecordedPath(uint32_t dwChannel)
{
    return "/replay/" + std::to_string(dwChannel);
}

// The server of one device. Belongs to the loop's thread, but where it says otherwise.
class CDeviceServer
{
public:
    CDeviceServer(std::shared_ptr<device::CDevice> pDevice, tagRtspOptions const& tOptions, GMainContext* pContext)
        : m_pDevice(std::move(pDevice)), m_pServer(gst_rtsp_onvif_server_new())
    {
        gst_rtsp_server_set_address(m_pServer, tOptions.strListen.c_str());
        gst_rtsp_server_set_service(m_pServer, "0");
        // Clients live on the loop's thread too: one that is closed from another one may never notice.
        GstRTSPThreadPool* const pPool = gst_rtsp_server_get_thread_pool(m_pServer);
        gst_rtsp_thread_pool_set_max_threads(pPool, 0);
        g_object_unref(pPool);
        if (tOptions.bLogin)
        {
            m_pAuth = gst_rtsp_auth_new();
            gst_rtsp_auth_set_supported_methods(m_pAuth, GST_RTSP_AUTH_DIGEST);
            gst_rtsp_server_set_auth(m_pServer, m_pAuth);
        }
        AddMounts();
        g_signal_connect(m_pServer, "client-connected", G_CALLBACK(OnClient), this);
        m_pSource = gst_rtsp_server_create_source(m_pServer, nullptr, nullptr);
        if (!m_pSource)
        {
            throw std::runtime_error("no port is free at " + tOptions.strListen);
        }
        g_source_attach(m_pSource, pContext);
        m_dwPort = static_cast<uint32_t>(gst_rtsp_server_get_bound_port(m_pServer));
    }
    ~CDeviceServer()
    {
        if (m_pSource)
        {
            g_source_destroy(m_pSource);
            g_source_unref(m_pSource);
        }
        EndClients();
        gst_clear_object(&m_pAuth);
        gst_object_unref(m_pServer);
    }
    CDeviceServer(CDeviceServer const&) = delete;
    CDeviceServer& operator=(CDeviceServer const&) = delete;

    // These two: any thread.
    uint32_t Port() const { return m_dwPort; }
    std::shared_ptr<CRtspMount> Mount(std::string const& strPath) const
    {
        const auto it = m_tMounts.find(strPath);
        return it == m_tMounts.end() ? nullptr : it->second;
    }

    void SetUp(bool bUp)
    {
        m_bUp = bUp;
        if (!bUp)
        {
            EndClients();
        }
    }

private:
    void AddMounts()
    {
        for (uint32_t dwChannel = 0; dwChannel < m_pDevice->Channels(); ++dwChannel)
        {
            for (const uint32_t dwKind : {eStreamMain, eStreamSub})
            {
                m_tMounts[LivePath(dwChannel, dwKind)] = LiveMount(m_pDevice, dwChannel, dwKind);
            }
            m_tMounts[RecordedPath(dwChannel)] = ReplayMount(m_pDevice, dwChannel);
        }
        GstRTSPMountPoints* const pPoints = gst_rtsp_server_get_mount_points(m_pServer);
        for (auto const& [strPath, pMount] : m_tMounts)
        {
            GstRTSPMediaFactory* const pFactory = MakeFactory(pMount);
            gst_rtsp_media_factory_add_role(pFactory, g_szRole, GST_RTSP_PERM_MEDIA_FACTORY_ACCESS, G_TYPE_BOOLEAN,
                                            TRUE, GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT, G_TYPE_BOOLEAN, TRUE, nullptr);
            gst_rtsp_onvif_media_factory_set_replay_support(GST_RTSP_ONVIF_MEDIA_FACTORY(pFactory),
                                                            strPath.starts_with("/replay/"));
            gst_rtsp_mount_points_add_factory(pPoints, strPath.c_str(), pFactory);
        }
        g_object_unref(pPoints);
    }

    // Who may log in may have changed.
    void RefreshUsers()
    {
        std::map<std::string, std::string> tUsers;
        {
            const device::CDevice::CLock tLock(*m_pDevice);
            tUsers = m_pDevice->Part<device::CUsers>().Passwords();
        }
        for (std::string const& strGone : m_astrUsers)
        {
            gst_rtsp_auth_remove_digest(m_pAuth, strGone.c_str());
        }
        m_astrUsers.clear();
        for (auto const& [strName, strPassword] : tUsers)
        {
            GstRTSPToken* const pToken =
                gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, g_szRole, nullptr);
            gst_rtsp_auth_add_digest(m_pAuth, strName.c_str(), strPassword.c_str(), pToken);
            gst_rtsp_token_unref(pToken);
            m_astrUsers.insert(strName);
        }
    }

    static void OnClient(GstRTSPServer*, GstRTSPClient* pClient, gpointer pSelf)
    {
        auto& tSelf = *static_cast<CDeviceServer*>(pSelf);
        if (tSelf.m_pAuth)
        {
            tSelf.RefreshUsers();
        }
        g_signal_connect(pClient, "pre-play-request", G_CALLBACK(OnPlay), pSelf);
        if (!tSelf.m_bUp)
        {
            // Not at once: the server hasn't finished with it.
            GSource* const pIdle = g_idle_source_new();
            g_source_set_callback(pIdle, CloseClient, g_object_ref(pClient), g_object_unref);
            g_source_attach(pIdle, g_main_context_get_thread_default());
            g_source_unref(pIdle);
        }
    }

    // The server itself takes any range, and waits for frames of it.
    static GstRTSPStatusCode OnPlay(GstRTSPClient*, GstRTSPContext* ptContext, gpointer pSelf)
    {
        auto const& tSelf = *static_cast<CDeviceServer*>(pSelf);
        gchar* szRange = nullptr;
        GstRTSPTimeRange* ptRange = nullptr;
        unsigned uChannel = 0;
        if (std::sscanf(ptContext->uri->abspath, "/replay/%u", &uChannel) != 1 ||
            gst_rtsp_message_get_header(ptContext->request, GST_RTSP_HDR_RANGE, &szRange, 0) != GST_RTSP_OK ||
            gst_rtsp_range_parse(szRange, &ptRange) != GST_RTSP_OK)
        {
            return GST_RTSP_STS_OK;
        }
        device::tagRecordingQuestion tQuestion;
        tQuestion.ullChannels = uint64_t{1} << uChannel;
        const auto atRecordings = tSelf.m_pDevice->Recordings(tQuestion);
        GstClockTime tBegin = 0;
        GstClockTime tEnd = 0;
        const bool bAfter = ptRange->unit == GST_RTSP_RANGE_CLOCK && !atRecordings.empty() &&
                            gst_rtsp_range_get_times(ptRange, &tBegin, &tEnd) && GST_CLOCK_TIME_IS_VALID(tBegin) &&
                            tBegin >= NtpNs(atRecordings.back().llEndUs);
        gst_rtsp_range_free(ptRange);
        return bAfter ? GST_RTSP_STS_INVALID_RANGE : GST_RTSP_STS_OK;
    }

    static gboolean CloseClient(gpointer pClient)
    {
        gst_rtsp_client_close(GST_RTSP_CLIENT(pClient));
        return G_SOURCE_REMOVE;
    }

    void EndClients()
    {
        const auto fnRemove = [](GstRTSPServer*, GstRTSPClient*, gpointer) { return GST_RTSP_FILTER_REMOVE; };
        gst_rtsp_server_client_filter(m_pServer, fnRemove, nullptr);
    }

    const std::shared_ptr<device::CDevice> m_pDevice;
    GstRTSPServer* const m_pServer;
    GstRTSPAuth* m_pAuth = nullptr; // null: nobody has to authenticate
    GSource* m_pSource = nullptr;
    uint32_t m_dwPort = 0;
    std::atomic<bool> m_bUp{true};
    std::map<std::string, std::shared_ptr<CRtspMount>> m_tMounts; // by path
    std::set<std::string> m_astrUsers;
};

class CRtspSide final : public IRtspSide
{
public:
    CRtspSide(std::vector<std::shared_ptr<device::CDevice>> const& apDevices, tagRtspOptions const& tOptions)
    {
        gst_init(nullptr, nullptr);
        for (auto const& pDevice : apDevices)
        {
            m_apServers.push_back(std::make_unique<CDeviceServer>(pDevice, tOptions, m_pContext));
        }
        m_tThread = std::thread(
            [this]
            {
                g_main_context_push_thread_default(m_pContext);
                g_main_loop_run(m_pLoop);
                m_apServers.clear();
                g_main_context_pop_thread_default(m_pContext);
            });
    }
    ~CRtspSide() override
    {
        Run([this] { g_main_loop_quit(m_pLoop); });
        m_tThread.join();
        g_main_loop_unref(m_pLoop);
        g_main_context_unref(m_pContext);
    }
    CRtspSide(CRtspSide const&) = delete;
    CRtspSide& operator=(CRtspSide const&) = delete;

    uint32_t Port(std::size_t nDevice) const override { return m_apServers.at(nDevice)->Port(); }
    std::string StreamPath(std::size_t, uint32_t dwChannel, uint32_t dwStreamKind) const override
    {
        return LivePath(dwChannel, dwStreamKind);
    }
    std::string ReplayPath(std::size_t, uint32_t dwChannel) const override { return RecordedPath(dwChannel); }
    void SetUp(std::size_t nDevice, bool bUp) override
    {
        Run([this, nDevice, bUp] { m_apServers.at(nDevice)->SetUp(bUp); });
    }
    void ForceKeyFrame(std::size_t nDevice, uint32_t dwChannel, uint32_t dwStreamKind) override
    {
        if (const auto pMount = m_apServers.at(nDevice)->Mount(LivePath(dwChannel, dwStreamKind)))
        {
            pMount->ForceKeyFrame();
        }
    }

private:
    // On the loop's thread.
    void Run(std::function<void()> fnRun)
    {
        const auto fnCall = [](gpointer pRun) -> gboolean
        {
            (*static_cast<std::function<void()>*>(pRun))();
            return G_SOURCE_REMOVE;
        };
        const auto fnDelete = [](gpointer pRun) { delete static_cast<std::function<void()>*>(pRun); };
        g_main_context_invoke_full(m_pContext, G_PRIORITY_DEFAULT, fnCall, new std::function<void()>(std::move(fnRun)),
                                   fnDelete);
    }

    GMainContext* const m_pContext = g_main_context_new();
    GMainLoop* const m_pLoop = g_main_loop_new(m_pContext, FALSE);
    std::vector<std::unique_ptr<CDeviceServer>> m_apServers;
    std::thread m_tThread;
};
} // namespace

std::unique_ptr<IRtspSide> StartRtsp(std::vector<std::shared_ptr<device::CDevice>> const& apDevices,
                                     tagRtspOptions const& tOptions)
{
    return std::make_unique<CRtspSide>(apDevices, tOptions);
}
} // namespace onvif_device

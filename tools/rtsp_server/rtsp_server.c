/* A launcher for GStreamer's RTSP server, for the demo and the tests:

     rtsp_server [--user U] [--port N] [--tls PEM] [--seconds N] /mount 'pipeline' [/mount 'pipeline'...]

   Listens on 127.0.0.1 only; port 0 (the default) takes a free one. Prints one line, "rtsp_server: port N", when it is
   ready. Ends when its standard input does, or after --seconds. A pipeline is what gst-launch takes, with payloaders
   named pay0, pay1...; every client gets one of its own, from its beginning. --tls: a file with certificate
   and key, for rtsps. With a user, clients must authenticate by digest; the password
   is that of the environment's TESSARO_PASSWORD. */

#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>
#include <stdio.h>
#include <stdlib.h>

static gchar* g_szUser;
static gchar* g_szTls;
static gint g_nPort;
static gint g_nSeconds = 3600;
static gchar** g_aszMounts;

static GOptionEntry g_atOptions[] = {
    {"user", 0, 0, G_OPTION_ARG_FILENAME, &g_szUser, "name that clients must give", "U"},
    {"port", 0, 0, G_OPTION_ARG_INT, &g_nPort, "port to listen on, 0: a free one", "N"},
    {"tls", 0, 0, G_OPTION_ARG_FILENAME, &g_szTls, "certificate and key, to serve rtsps", "PEM"},
    {"seconds", 0, 0, G_OPTION_ARG_INT, &g_nSeconds, "end after so long", "N"},
    {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_STRING_ARRAY, &g_aszMounts, NULL, NULL},
    {NULL, 0, 0, 0, NULL, NULL, NULL},
};

static int Fail(char const* szWhat)
{
    fprintf(stderr, "rtsp_server: %s\n", szWhat);
    return EXIT_FAILURE;
}

static gboolean OnInput(GIOChannel* pInput, GIOCondition eCondition, gpointer pLoop)
{
    gchar szIgnored[64];
    gsize nRead = 0;
    (void)eCondition;
    if (g_io_channel_read_chars(pInput, szIgnored, sizeof szIgnored, &nRead, NULL) == G_IO_STATUS_NORMAL)
    {
        return TRUE;
    }
    g_main_loop_quit(pLoop);
    return FALSE;
}

static gboolean OnTime(gpointer pLoop)
{
    g_main_loop_quit(pLoop);
    return FALSE;
}

static void RequireLogin(GstRTSPServer* pServer)
{
    GstRTSPAuth* pAuth = gst_rtsp_auth_new();
    GstRTSPToken* pToken = gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, "viewer", NULL);
    gst_rtsp_auth_set_supported_methods(pAuth, GST_RTSP_AUTH_DIGEST);
    gst_rtsp_auth_add_digest(pAuth, g_szUser, g_getenv("TESSARO_PASSWORD"), pToken);
    gst_rtsp_token_unref(pToken);
    if (g_szTls)
    {
        GTlsCertificate* pCertificate = g_tls_certificate_new_from_file(g_szTls, NULL);
        gst_rtsp_auth_set_tls_certificate(pAuth, pCertificate);
        g_clear_object(&pCertificate);
    }
    gst_rtsp_server_set_auth(pServer, pAuth);
    g_object_unref(pAuth);
}

static void AddMount(GstRTSPMountPoints* pMounts, char const* szMount, char const* szPipeline)
{
    GstRTSPMediaFactory* pFactory = gst_rtsp_media_factory_new();
    GstRTSPAddressPool* pPool = gst_rtsp_address_pool_new();
    gst_rtsp_media_factory_set_launch(pFactory, szPipeline);
    gst_rtsp_media_factory_add_role(pFactory, "viewer", GST_RTSP_PERM_MEDIA_FACTORY_ACCESS, G_TYPE_BOOLEAN, TRUE,
                                    GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT, G_TYPE_BOOLEAN, TRUE, NULL);
    gst_rtsp_address_pool_add_range(pPool, "239.255.42.1", "239.255.42.20", 30000, 30200, 1);
    gst_rtsp_media_factory_set_address_pool(pFactory, pPool);
    gst_rtsp_media_factory_set_multicast_iface(pFactory, "lo");
    gst_rtsp_mount_points_add_factory(pMounts, szMount, pFactory);
    g_object_unref(pPool);
}

int main(int nArguments, char** aszArguments)
{
    GError* pError = NULL;
    GOptionContext* pOptions = g_option_context_new("/mount 'pipeline' ...");
    g_option_context_add_main_entries(pOptions, g_atOptions, NULL);
    g_option_context_add_group(pOptions, gst_init_get_option_group());
    if (!g_option_context_parse(pOptions, &nArguments, &aszArguments, &pError))
    {
        return Fail(pError->message);
    }
    g_option_context_free(pOptions);
    if (!g_aszMounts || g_strv_length(g_aszMounts) % 2 != 0)
    {
        return Fail("mounts and pipelines come in pairs");
    }
    if (g_szTls && !g_szUser)
    {
        return Fail("--tls needs a --user");
    }
    if (g_szUser && !g_getenv("TESSARO_PASSWORD"))
    {
        return Fail("--user needs a password in TESSARO_PASSWORD");
    }

    GstRTSPServer* pServer = gst_rtsp_server_new();
    gchar* szPort = g_strdup_printf("%d", g_nPort);
    gst_rtsp_server_set_address(pServer, "127.0.0.1");
    gst_rtsp_server_set_service(pServer, szPort);
    g_free(szPort);
    if (g_szUser)
    {
        RequireLogin(pServer);
    }
    GstRTSPMountPoints* pMounts = gst_rtsp_server_get_mount_points(pServer);
    for (gchar** pszMount = g_aszMounts; *pszMount; pszMount += 2)
    {
        AddMount(pMounts, pszMount[0], pszMount[1]);
    }
    g_object_unref(pMounts);
    if (gst_rtsp_server_attach(pServer, NULL) == 0)
    {
        return Fail("the port is taken");
    }
    printf("rtsp_server: port %d\n", gst_rtsp_server_get_bound_port(pServer));
    fflush(stdout);

    GMainLoop* pLoop = g_main_loop_new(NULL, FALSE);
    GIOChannel* pInput = g_io_channel_unix_new(0);
    g_io_add_watch(pInput, G_IO_IN | G_IO_HUP | G_IO_ERR, OnInput, pLoop);
    g_timeout_add_seconds((guint)g_nSeconds, OnTime, pLoop);
    g_main_loop_run(pLoop);
    return EXIT_SUCCESS;
}

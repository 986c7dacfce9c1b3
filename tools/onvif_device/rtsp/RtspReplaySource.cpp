#include "tools/onvif_device/rtsp/RtspReplaySource.h"

#include <atomic>
#include <gst/base/gstbasesrc.h>

using onvif_device::CReplayTrack;

// A source of recorded frames. GObject's classes are made by C's rules and names.
struct CReplaySource
{
    GstBaseSrc tParent;
    CReplayTrack* pTrack;
    std::atomic<bool> bUnlocked;
    bool bHasCaps;
};
struct CReplaySourceClass
{
    GstBaseSrcClass tParent;
};
extern "C"
{
    G_DEFINE_TYPE(CReplaySource, replay_source, GST_TYPE_BASE_SRC)
}

static CReplaySource& Self(gpointer p)
{
    return *static_cast<CReplaySource*>(p);
}

static gboolean replay_source_is_seekable(GstBaseSrc*)
{
    return TRUE;
}

static gboolean replay_source_do_seek(GstBaseSrc* pSource, GstSegment* pSegment)
{
    Self(pSource).pTrack->Seek(*pSegment);
    return TRUE;
}

static gboolean replay_source_query(GstBaseSrc* pSource, GstQuery* pQuery)
{
    GstFormat eFormat = GST_FORMAT_UNDEFINED;
    if (GST_QUERY_TYPE(pQuery) == GST_QUERY_DURATION)
    {
        gst_query_parse_duration(pQuery, &eFormat, nullptr);
        if (eFormat == GST_FORMAT_TIME)
        {
            gst_query_set_duration(pQuery, eFormat, static_cast<gint64>(Self(pSource).pTrack->EndNs()));
            return TRUE;
        }
    }
    return GST_BASE_SRC_CLASS(replay_source_parent_class)->query(pSource, pQuery);
}

static gboolean replay_source_unlock(GstBaseSrc* pSource)
{
    Self(pSource).bUnlocked = true;
    return TRUE;
}

static gboolean replay_source_unlock_stop(GstBaseSrc* pSource)
{
    Self(pSource).bUnlocked = false;
    return TRUE;
}

static GstFlowReturn replay_source_create(GstBaseSrc* pSource, guint64, guint, GstBuffer** ppBuffer)
{
    CReplaySource& tSelf = Self(pSource);
    if (!tSelf.bHasCaps)
    {
        GstCaps* const pCaps = tSelf.pTrack->Caps();
        gst_base_src_set_caps(pSource, pCaps);
        gst_caps_unref(pCaps);
        tSelf.bHasCaps = true;
    }
    for (;;)
    {
        std::optional<GstSegment> tSegment;
        const CReplayTrack::eNext eNext = tSelf.pTrack->Next(*ppBuffer, tSegment);
        if (eNext == CReplayTrack::eNext::End)
        {
            return GST_FLOW_EOS;
        }
        if (tSegment)
        {
            gst_base_src_new_segment(pSource, &*tSegment);
        }
        if (eNext == CReplayTrack::eNext::Frame)
        {
            return GST_FLOW_OK;
        }
        if (tSelf.bUnlocked)
        {
            return GST_FLOW_FLUSHING;
        }
        g_usleep(20000);
    }
}

static void replay_source_finalize(GObject* pObject)
{
    delete Self(pObject).pTrack;
    G_OBJECT_CLASS(replay_source_parent_class)->finalize(pObject);
}

static void replay_source_class_init(CReplaySourceClass* pClass)
{
    static GstStaticPadTemplate s_tSource =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    GstBaseSrcClass* const pSource = GST_BASE_SRC_CLASS(pClass);
    G_OBJECT_CLASS(pClass)->finalize = replay_source_finalize;
    pSource->is_seekable = replay_source_is_seekable;
    pSource->do_seek = replay_source_do_seek;
    pSource->query = replay_source_query;
    pSource->unlock = replay_source_unlock;
    pSource->unlock_stop = replay_source_unlock_stop;
    pSource->create = replay_source_create;
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(pClass), &s_tSource);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(pClass), "Replay source", "Source",
                                          "What a simulated device has recorded", "Tessaro");
}

static void replay_source_init(CReplaySource* pSource)
{
    gst_base_src_set_format(GST_BASE_SRC(pSource), GST_FORMAT_TIME);
    gst_base_src_set_automatic_eos(GST_BASE_SRC(pSource), FALSE);
}

namespace onvif_device
{
GstElement* MakeReplaySource(std::unique_ptr<CReplayTrack> pTrack)
{
    auto* const pSource = static_cast<CReplaySource*>(g_object_new(replay_source_get_type(), nullptr));
    pSource->pTrack = pTrack.release();
    return GST_ELEMENT(pSource);
}
} // namespace onvif_device

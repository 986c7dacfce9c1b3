#include "tools/onvif_device/rtsp/RtspMount.h"

#include <gst/rtsp-server/rtsp-onvif-server.h>

// A factory that asks a mount. GObject's classes are made by C's rules and names.
struct CDeviceFactory
{
    GstRTSPOnvifMediaFactory tParent;
    std::shared_ptr<onvif_device::CRtspMount>* ppMount;
};
struct CDeviceFactoryClass
{
    GstRTSPOnvifMediaFactoryClass tParent;
};
extern "C"
{
    G_DEFINE_TYPE(CDeviceFactory, device_factory, GST_TYPE_RTSP_ONVIF_MEDIA_FACTORY)
}

static GstElement* device_factory_create_element(GstRTSPMediaFactory* pFactory, GstRTSPUrl const* pUrl)
{
    return (*reinterpret_cast<CDeviceFactory*>(pFactory)->ppMount)->MakeElement(pFactory, pUrl);
}

static void device_factory_media_configure(GstRTSPMediaFactory* pFactory, GstRTSPMedia* pMedia)
{
    GstElement* const pElement = gst_rtsp_media_get_element(pMedia);
    (*reinterpret_cast<CDeviceFactory*>(pFactory)->ppMount)->Configure(pMedia, pElement);
    gst_object_unref(pElement);
}

static void device_factory_finalize(GObject* pObject)
{
    delete reinterpret_cast<CDeviceFactory*>(pObject)->ppMount;
    G_OBJECT_CLASS(device_factory_parent_class)->finalize(pObject);
}

static void device_factory_class_init(CDeviceFactoryClass* pClass)
{
    G_OBJECT_CLASS(pClass)->finalize = device_factory_finalize;
    GST_RTSP_MEDIA_FACTORY_CLASS(pClass)->create_element = device_factory_create_element;
    GST_RTSP_MEDIA_FACTORY_CLASS(pClass)->media_configure = device_factory_media_configure;
}

static void device_factory_init(CDeviceFactory* pFactory)
{
    pFactory->ppMount = nullptr;
}

namespace onvif_device
{
GstRTSPMediaFactory* MakeFactory(std::shared_ptr<CRtspMount> pMount)
{
    auto* const pFactory = static_cast<CDeviceFactory*>(g_object_new(device_factory_get_type(), nullptr));
    if (char const* const szBack = pMount->BackChannel())
    {
        gst_rtsp_onvif_media_factory_set_backchannel_launch(&pFactory->tParent, szBack);
    }
    pFactory->ppMount = new std::shared_ptr<CRtspMount>(std::move(pMount));
    gst_rtsp_media_factory_set_media_gtype(GST_RTSP_MEDIA_FACTORY(pFactory), GST_TYPE_RTSP_ONVIF_MEDIA);
    return GST_RTSP_MEDIA_FACTORY(pFactory);
}

GstElement* ElementOfText(GstRTSPMediaFactory* pFactory, GstRTSPUrl const* pUrl, char const* szLaunch)
{
    gst_rtsp_media_factory_set_launch(pFactory, szLaunch);
    return GST_RTSP_MEDIA_FACTORY_CLASS(device_factory_parent_class)->create_element(pFactory, pUrl);
}
} // namespace onvif_device

#include "tools/onvif_device/Exchange.h"

#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/Services.h"

#include "plugins/device/Device.h"
#include "plugins/device/Worker.h"

namespace onvif_device
{
namespace
{
// As the device's faults say: later, never, or that it is busy. True: it goes on.
bool Admit(device::CDevice& tDevice, tagExchange& tExchange)
{
    if (!tDevice.IsUp())
    {
        tExchange.bDrop = true;
        return false;
    }
    if (tExchange.bAdmitted)
    {
        return true;
    }
    const device::CDevice::CLock tLock(tDevice);
    device::CFaults& tFaults = tDevice.Part<device::CFaults>();
    tExchange.bHangs = tExchange.bHangs || (tExchange.llWaitUntilUs == 0 && tFaults.TakeHang());
    tagDeviceFault const* const ptSlow = tFaults.On(eFaultSlow);
    const int64_t llAnswerUs = tExchange.llArrivedUs + (ptSlow ? int64_t{ptSlow->dwValue} * 1000 : 0);
    if (tExchange.bHangs || llAnswerUs > device::SteadyUs())
    {
        tExchange.llWaitUntilUs = tExchange.bHangs ? device::g_llNever : llAnswerUs;
        return false;
    }
    tExchange.bAdmitted = true;
    if (tFaults.On(eFaultBusy))
    {
        tExchange.nStatus = 503;
        tExchange.strType = "text/plain";
        tExchange.strAnswer = "busy\n";
        return false;
    }
    return true;
}
} // namespace

void Serve(CFace& tFace, tagExchange& tExchange)
{
    if (!Admit(tFace.Device(), tExchange))
    {
        return;
    }
    tExchange.llWaitUntilUs = 0;
    const bool bSoap = tExchange.strMethod == "POST" && (ServiceAt(tExchange.strPath, tFace.Quirks()) ||
                                                         tExchange.strPath.starts_with("/onvif/subscription/"));
    bSoap ? ServeSoap(tFace, tExchange) : ServeFile(tFace, tExchange);
}
} // namespace onvif_device

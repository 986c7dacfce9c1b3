#pragma once

#include "plugins/onvif/Login.h"

namespace onvifclient
{
/// A file on its way from the device. One that was just opened waits for eTransferStart.
class CDownload : public CObject
{
public:
    using CObject::CObject;

    /// eResultBadArgument; eResultRefused: it is over.
    virtual int Control(eFileTransferControl eControl) = 0;
    virtual int SetCallback(FileDownloadCallback pfnData, unsigned long dwUser) = 0;
};
} // namespace onvifclient

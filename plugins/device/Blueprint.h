#pragma once

#include "protocol/interface/Frames.h"
#include "protocol/interface/Login.h"
#include "protocol/interface/Plugin.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace device
{
/// A user from the factory.
struct tagUserBlueprint
{
    std::string strName;
    std::string strPassword;
    uint32_t dwLevel = eUserViewer;
};

/// How a stream is coded from the factory.
struct tagVideoBlueprint
{
    uint32_t dwCodec = eCodecH264;
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    uint32_t dwFrameRate = 0; ///< frames per 1000 s
};

/// One channel from the factory.
struct tagChannelBlueprint
{
    std::array<tagVideoBlueprint, 2> atStreams{{{eCodecH264, 1280, 720, 25000}, {eCodecH264, 640, 360, 15000}}};
    bool bAudio = true;
    bool bPTZ = false;
};

/// What lies on the disks when a device begins to exist: of each channel one recording after the other, the last one
/// ending a while before now, with a gap between them.
struct tagRecordingBlueprint
{
    uint32_t dwCount = 144;        ///< of each channel
    uint32_t dwEverySeconds = 600; ///< from the begin of one to that of the next
    uint32_t dwSeconds = 60;       ///< their length
};

/// What a device is made of. The defaults are those of a device that no fleet file describes.
struct tagDeviceBlueprint
{
    std::string strAddress;
    uint32_t dwPort = 0; ///< where it listens; 0: at every port
    std::string strName;
    std::string strModel = "TB-400";
    std::string strSerialNumber; ///< empty: made from the address
    std::string strFirmware = "1.0.0";
    std::string strTimeZone = "UTC0";
    std::vector<tagChannelBlueprint> atChannels;
    uint32_t dwInputs = 4;
    uint32_t dwOutputs = 4;
    uint32_t dwSerialPorts = 2;
    uint32_t dwDisks = 2;
    uint64_t ullDiskBytes = uint64_t{4} << 40;
    uint32_t dwScreens = 4;
    bool bPanel = true;
    bool bLoginsEnd = false; ///< a connection that is lost isn't tried again
    std::vector<tagUserBlueprint> atUsers{{"admin", "admin", eUserAdministrator}, {"viewer", "viewer", eUserViewer}};
    tagRecordingBlueprint tRecordings;
    std::vector<tagDeviceFault> atFaults;      ///< from its begin on
    std::map<std::string, std::string> tOnvif; ///< the table onvif: for who serves the device by ONVIF
    std::string strStatePath;                  ///< empty: a restart of the process forgets all
};

/// The device that stands at every address of which no fleet file knows more: four channels, the first two of which
/// move, the last one of which has H.265.
tagDeviceBlueprint DefaultBlueprint();
} // namespace device

#include "tools/tessaro/Command.h"

namespace tessaro
{
namespace
{
constexpr tagCommand g_atCommands[] = {
    {"doctor", "say which plug-ins are there and why others aren't; with an address, try a device step by step",
     &DeclareDoctor},
    {"probe", "show the devices on the network", &DeclareProbe},
    {"info", "show what a device is, its streams, and what it can do", &DeclareInfo},
    {"live", "follow a live stream: rates, losses, latency; into a file; a contact sheet of all channels",
     &DeclareLive},
    {"snapshot", "take a picture", &DeclareSnapshot},
    {"ptz", "move a camera: positions, presets, tours, keys", &DeclarePtz},
    {"events", "show what a device reports, as it comes", &DeclareEvents},
    {"recordings", "show what is recorded, with a bar for each day", &DeclareRecordings},
    {"play", "play a recording", &DeclarePlay},
    {"download", "fetch a recording or another file; goes on where it broke off", &DeclareDownload},
    {"talk", "talk and listen to a device", &DeclareTalk},
    {"config", "read and write a device's configuration as JSON", &DeclareConfig},
    {"alarm", "show alarm inputs and outputs, switch outputs, clear alarms", &DeclareAlarm},
    {"log", "show a device's log", &DeclareLog},
    {"wall", "show and change what a video decoder shows", &DeclareWall},
    {"upgrade", "give a device new firmware", &DeclareUpgrade},
    {"check-plugin", "for authors of plug-ins: whether one keeps the promises of the interface", &DeclareCheckPlugin},
    {"trace", "for authors of plug-ins: write down what a program and its plug-ins say to each other", &DeclareTrace},
};
} // namespace

std::span<tagCommand const> Commands()
{
    return g_atCommands;
}
} // namespace tessaro

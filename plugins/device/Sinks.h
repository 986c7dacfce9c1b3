#pragma once

#include "protocol/interface/Frames.h"
#include "protocol/interface/Voice.h"

namespace device
{
/// Where frames go. Called on the thread that makes them, with no lock of the device's held; a record and its data are
/// valid until the call returns. What a sink's owner has closed may still be called, and then does nothing.
class IFrameSink
{
public:
    virtual void OnFrame(tagStreamMediaFrame const& tFrame) = 0;
    virtual ~IFrameSink() = default;
};

/// Where voice goes; as IFrameSink.
class IVoiceSink
{
public:
    virtual void OnVoice(eVoiceStreamSource eSource, tagStreamVoiceFrame const& tFrame) = 0;
    virtual ~IVoiceSink() = default;
};

/// Where the blocks of a file go; as IFrameSink. The last call has no data: dwLength is 0 when the whole file has come,
/// else the ePluginResult that ended it.
class IBlockSink
{
public:
    virtual void OnBlock(tagBuffer const& tBlock) = 0;
    virtual ~IBlockSink() = default;
};
} // namespace device

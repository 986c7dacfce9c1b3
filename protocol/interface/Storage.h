/// @file
/// Disks, groups of disks, and how much they hold.

#ifndef TESSARO_PROTOCOL_INTERFACE_STORAGE_H
#define TESSARO_PROTOCOL_INTERFACE_STORAGE_H

#include "Common.h"

TESSARO_C_BEGIN

/// @addtogroup plugin
/// @{

/// @defgroup storage Storage
/// Words and texts of ClientAdapter_DataExistCheck, ClientAdapter_DiskGroupManage, ClientAdapter_GetDataSize and
/// ClientAdapter_GetMultiTypeDataSize. The disks themselves are read as configuration block eConfigStorage.
///
/// **Days that hold recordings.** ClientAdapter_DataExistCheck: dwType is a mask of eHistoryStreamType bits, 0: all.
/// dwMonth is year * 100 + month, 202405. szDays receives one character for each day of the month, '1' where there is a
/// recording and '0' where there is none, and a terminator; *pdwLength is the room at szDays (32 is enough) before the
/// call and the number of days after it. Days are those of the device's local time.
///
/// **Sizes.** szBegin and szEnd are UTC as in `2024-05-31T08:00:00Z`; empty or null: from the first, to the last.
/// dwChannel may be TESSARO_ALL. dwTypes and eStreamType are eHistoryStreamType bits, 0: all. dwFlag: 1 counts only
/// protected files, 0 all. *pdwSize receives mebibytes (1048576 bytes), rounded up.
/// @{

/// Which groups of disks a size is asked of.
TESSARO_ENUM(eDiskGroupType){
    eDiskGroupAll = 0,       ///< all of them
    eDiskGroupMain = 1,      ///< where recordings go
    eDiskGroupRedundant = 2, ///< where second copies go
    eDiskGroupArchive = 3,   ///< where recordings are moved for good
};

/// What ClientAdapter_DiskGroupManage does. Groups and disks have numbers from 0.
///
/// | Operation            | dwGroup | dwDisk    | dwValue                                               |
/// | -------------------- | ------- | --------- | ----------------------------------------------------- |
/// | eDiskGroupAddDisk    | group   | disk      | eDiskGroupType of the group, when it begins with this |
/// | eDiskGroupRemoveDisk | group   | disk      | 0                                                     |
/// | eDiskGroupFormat     | 0       | disk      | 0                                                     |
/// | eDiskGroupBind       | group   | 0         | channel, or TESSARO_ALL                               |
/// | eDiskGroupQuota      | group   | channel   | percent of the group; 0: no limit                     |
TESSARO_ENUM(eDiskGroupOperation){
    eDiskGroupAddDisk = 1,    ///< the disk belongs to this group, and to no other; its recordings stay
    eDiskGroupRemoveDisk = 2, ///< the disk belongs to no group: nothing is recorded there, what is there stays
    eDiskGroupFormat = 3,     ///< everything on the disk is deleted, protected files too
    eDiskGroupBind = 4,       ///< the channel records to this group
    eDiskGroupQuota = 5,      ///< the channel keeps at most so much of the group
};

/// What a disk is doing.
TESSARO_ENUM(eDiskState){
    eDiskAbsent = 0,     ///< not there
    eDiskOk = 1,         ///< works
    eDiskSleeping = 2,   ///< works, and stands still
    eDiskFormatting = 3, ///< is being formatted
    eDiskFull = 4,       ///< full, and nothing may be overwritten
    eDiskFaulty = 5,     ///< answers with errors
};

/// @}

/// @}

TESSARO_C_END

#endif

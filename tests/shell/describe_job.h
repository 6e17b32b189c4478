// SPDX-License-Identifier: MIT
#pragma once

#include "shell/job_config.h"

#include <sstream>
#include <string>

namespace korvalite::core::test {

// Every field as text, so that a failed comparison is readable.
inline std::string describe(const BatchSettings& s) {
    std::ostringstream out;
    out << "InputFile=" << s.InputFile.view() << " OutputFile=" << s.OutputFile.view()
        << " DeleteInputFile=" << s.DeleteInputFile << " Symmetry=" << s.Symmetry
        << " FreezeBorder=" << s.FreezeBorder << " UseMask=" << s.UseMask
        << " ProgressiveMeshMinNum=" << s.ProgressiveMeshMinNum
        << " DecimationTargetNum=" << s.DecimationTargetNum
        << " DecimationTargetPourcent=" << s.DecimationTargetPourcent
        << " MemSpeedTradeOff=" << s.MemSpeedTradeOff
        << " AvoidNormalReverse=" << s.AvoidNormalReverse
        << " ProtectTopology=" << s.ProtectTopology << " AllowFinishStep=" << s.AllowFinishStep
        << " UseAreaWeighting=" << s.UseAreaWeighting << " IFlipX=" << s.IFlipX
        << " IFlipY=" << s.IFlipY << " IFlipZ=" << s.IFlipZ << " ISwitchYZ=" << s.ISwitchYZ
        << " KeepUVs=" << s.KeepUVs << " UseVtxColors=" << s.UseVtxColors
        << " UseVtxColorsCoef=" << s.UseVtxColorsCoef << " NumThread=" << s.NumThread
        << " DoReorder=" << s.DoReorder << ' ';
    return out.str();
}

inline std::string describe(const JobConfig& job) {
    std::ostringstream out;
    out << "DeleteConfigFile=" << job.DeleteConfigFile << " AppMode=" << job.AppMode
        << " DisplayMode=" << job.DisplayMode << " UseProgressBar=" << job.UseProgressBar
        << " KeepTempFiles=" << job.KeepTempFiles << " MessageChannelId=" << job.MessageChannelId
        << " MessageReaderId=" << job.MessageReaderId << " ProcessId=" << job.ProcessId
        << " QueueId=" << job.QueueId << " versionCode=" << job.versionCode << ' '
        << describe(job.settings);
    for (const BatchEntry& entry : job.batchList)
        out << "{kind=" << entry.kind << ' ' << describe(entry.settings) << '}';
    return out.str();
}

}  // namespace korvalite::core::test

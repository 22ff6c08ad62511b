#include "pitch/pitch_table.h"

#include "audio/active_level.h"
#include "console/report_format.h"

PitchTable::PitchTable(const std::string& file)
    : out_(file, "channel,time_s,open_loop_lag,lag,fraction,f0_hz,gain,prediction_gain_db,level_dbov,voiced\n") {}

void PitchTable::add(const std::vector<std::vector<VspvPitchPoint>>& points) {
    std::string lines;
    for (std::size_t i = 0; i < points[0].size(); i++, points_++)
        for (std::size_t c = 0; c < points.size(); c++) {
            const VspvPitchPoint& p = points[c][i];
            lines += format("%zu,%.3f,%d,%d,%d,%.2f,%.4f,%.2f,%.1f,%d\n", c + 1, kPitchPointSeconds * double(points_),
                            p.openLoopLag, p.lag, p.fraction, p.f0, double(p.gain), double(p.predictionGain),
                            toDbov(p.power), p.voiced);
        }
    out_.write(lines);
}

#include "audio/recording.h"

Recording readRecording(AudioReader in) {
    Recording recording{in.fileRate(), in.rate(), std::vector<Samples>(in.channels()), {}};
    for (Block block; in.read(kBlockLength, block);)
        for (std::size_t i = 0; i < block.size(); i++)
            recording.channels[i].insert(recording.channels[i].end(), block[i].begin(), block[i].end());
    recording.notes = in.notes();
    return recording;
}

// Audio that is needed once more, or later, kept in a temporary file.
#pragma once

#include "audio/audio.h"
#include "console/output_file.h"

// The file is in the folder for temporary files (TMPDIR, or /tmp) and has no name: it is gone when the program ends.
class Spool {
  public:
    Spool();
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    void write(const Block& block);
    void rewind();
    // The next block of so many channels as it was written; false at the end.
    bool read(Block& block);

    void copyTo(OutputFile& out);
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

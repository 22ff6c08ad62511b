// Coded speech in files and pipes, frame by frame, whatever the format.
//
// A format is a line of the table in coded_file.cpp: an extension, the codec that it names, and functions that open and
// create such files. Every codec without a line has a stream of bare octets, whose extension is the name of the codec.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vspsvoice.h"

struct CodedFrame {
    VspvFrame told{};  // type, quality, bit rate and number of octets, as the codec tells them or wants to be told
    std::string bytes;
    std::size_t samples = 0;  // so many count: all of the codec's frame, or fewer at the end of a stream
};

class FrameReader {
  public:
    explicit FrameReader(const VspvCodec& codec) : codec_(codec) {}
    virtual ~FrameReader() = default;
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    const VspvCodec& codec() const { return codec_; }
    virtual const std::string& name() const = 0;       // for messages
    virtual std::uint64_t expectedOctets() const = 0;  // 0 if that is not known
    virtual std::uint64_t octets() const = 0;          // read so far

    // False at the end. What cannot be a frame is a FileError.
    virtual bool read(CodedFrame& frame) = 0;

  private:
    const VspvCodec& codec_;
};

class FrameWriter {
  public:
    FrameWriter() = default;
    virtual ~FrameWriter() = default;
    FrameWriter(const FrameWriter&) = delete;
    FrameWriter& operator=(const FrameWriter&) = delete;

    virtual std::size_t framesOfBlock() const { return 1; }  // the file has a multiple of them
    virtual bool holdsSilence() const { return false; }      // frames of silence descriptors and of no data
    virtual void write(const CodedFrame& frame) = 0;
    virtual std::uint64_t octets() const = 0;  // written so far
    virtual void commit() = 0;                 // see OutputFile
};

// What the command line says of a coded file; the codec is empty and the bit rate 0 if it does not.
struct CodedFileChoice {
    std::string file, codec;
    int bitRate = 0;
};

std::unique_ptr<FrameReader> openCoded(const CodedFileChoice& choice);

// The codec of a file that is to be written.
const VspvCodec& codecOf(const CodedFileChoice& choice);
std::unique_ptr<FrameWriter> createCoded(const CodedFileChoice& choice);

// The extensions that are not the name of a codec, for help and messages.
std::string codedExtensions();

// The formats of sound files, from the extensions of their names.
#pragma once

#include <string>

// The libsndfile format of an output. Standard output is a WAV file or, if the input has no header, has none either.
int outputFormat(const std::string& file, bool raw);
// The libsndfile format of headerless audio.
int rawFormat(const std::string& file);
// The extensions that outputFormat knows, for messages.
std::string outputExtensions();
// The format of sound files that begin with these four bytes; empty if there is none.
std::string formatOfHeader(const std::string& bytes);

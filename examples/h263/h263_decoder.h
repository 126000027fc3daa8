// The H.263 decoder of zanvc-h263dec (h263_decoder.cpp).
#pragma once

// Decodes the H.263 stream in in_path to yuv420p pictures in out_path.
// Returns the exit status: 0 when every picture decoded, 1 after printing
// one line naming the fault to stderr.
int h263_decode_file(const char* in_path, const char* out_path);

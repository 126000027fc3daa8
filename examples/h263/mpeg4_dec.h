// MPEG-4 visual (ISO/IEC 14496-2) elementary-stream decoding for
// zanvc-h263dec: simple and advanced simple profile streams, written against
// the public zanvc interface only.
#pragma once

// When the file IN starts with an MPEG-4 start code (00 00 01 xx), decodes it
// to OUT as raw yuv420p pictures in display order and returns the process
// exit status (0 on success, 1 with a message on standard error otherwise).
// Returns -1 when the file is not an MPEG-4 stream (or cannot be read: the
// caller then reports that itself).
int mpeg4_try_main(const char* in_name, const char* out_name);

// Test tool: reads a data-partitioned stream with ordinary coefficient codes
// and writes the same stream with the reversible codes (the VOL's
// reversible_vlc set, the I- and P-VOP blocks coded again, stuffing before
// resync markers and start codes redone).  Returns the exit status.
int mpeg4_rewrite_rvlc(const char* in_name, const char* out_name);

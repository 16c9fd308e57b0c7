// SPDX-License-Identifier: BSD-3-Clause

// The bytes of a star database: its header and its records, the same on every machine.
//
//     header:  0  8 bytes  magic, "VELMORA2" in what we write
//              8  24       reserved, 0
//
//     star:    0  f64      ra            20  u8   red, green, blue, reserved (0)
//              8  f64      dec           24  f64  distance
//             16  f32      flux
//
// Units:     see stars/starfile.h.
// Shapes:    numbers are IEEE 754, least significant byte first. They are encoded and decoded byte
//            by byte, so the machine's byte order does not matter.
// Errors:    none; decoding accepts any bytes.
// Threads:   pure functions of their arguments.
#pragma once

#include "core/types.h"
#include "stars/starfile.h"

namespace velmora {

const uword record_size = sizeof(star); // bytes, also of the header

// Write `record_size` bytes.
void encode_header(unsigned char* bytes);
void encode_record(const star& record, unsigned char* bytes);

star decode_record(const unsigned char* bytes);

} // namespace velmora

// SPDX-License-Identifier: MIT
// What the fuzz targets share: each case starts as a process of its own would and leaves nothing behind. The linker
// hands exit, _Exit, fopen, fdopen, fopencookie and fclose to wrappers: a fatal error comes back to the target, and
// streams are counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Runs the steps of one case and frees what it leaves. What exit or a stop finds open is closed; a stream that other
// steps leave open is a fault. The steps hold no object with a destructor: an exit jumps over them.
void RunCase(void (*steps)());

// Leaves the case: its steps go no further.
[[noreturn]] void LeaveCase();

// Fails the case unless what is claimed holds.
void Demand(bool holds, const char* claim);

// A state as the shell leaves it when a run begins, for targets that call a reader by itself: log and output to
// /dev/null, parameter files in the directory of the target.
void StartRun(int kind);

// The bytes as a stream. Reading fails at the end of bytes that end with 0xff, as on a damaged disk.
std::FILE* OpenBytes(const std::uint8_t* data, std::size_t size);

// The directory of the target, made by the first call and removed at the end of the process.
const char* CaseDirectory();

// Writes a file of that directory.
void WriteCaseFile(const char* name, const void* data, std::size_t size);

// The three parameter files with a few types, for targets that don't fuzz them: H, C, N, O, F and S.
void WriteFixedParameterFiles();

// Takes bytes up to the next form feed, which is dropped. False, and nothing taken, if no byte is left.
bool TakePart(const std::uint8_t*& data, std::size_t& size, const std::uint8_t*& part, std::size_t& partSize);

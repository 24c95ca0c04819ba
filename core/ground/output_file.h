// SPDX-License-Identifier: MIT
// The output file, which appears whole or not at all: what is written goes to a new neighbour of it, with the process
// number and the time behind the name, and takes the place of the output file once all of it is written.
#pragma once

#include <cstdio>

// Opens the output file of the run for writing; null, with the reason in errno, if it can't be created. What stands
// there stays until the file is closed. A path that isn't an ordinary file (a device, a link), and a file in a
// directory that takes no new ones, are written in place; a file that can't be replaced is overwritten as the new one
// is closed.
std::FILE* OpenOutputFile();

// Closes the file of OpenOutputFile and puts it in its place. False, with the reason in errno, if it couldn't be
// written whole: then no output file stands there, or, where it can't be removed, an empty one.
bool CloseOutputFile(std::FILE* file);

// Makes a text with what stands around it the whole output file and ends the process with code 0. Where the output file
// can't take it, standard error gets one line with the path, the reason and the text.
[[noreturn]] void EndWithOutput(const char* before, const char* text, const char* behind);

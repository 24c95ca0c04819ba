// SPDX-License-Identifier: MIT
// Reading of lines and numbers, as the formats of the input files define it: with the rules of fgets and scanf, and
// the same on every platform where the C libraries differ (overflow, last digits). What reads a file looks at the
// messages, also within a line, a word or white space without an end: a stop unwinds the run from there.
#pragma once

#include <cstdio>

// Room for a line piece of an input file: 511 characters and a terminator.
inline constexpr int LineSize = 512;

// Reads a line, or the next size - 1 characters of a longer one; false at the end of the file.
bool ReadLine(std::FILE* file, char* line, int size = LineSize);

// Reads a number after white space as " %d" does; text moves behind it. Numbers beyond 32 bits saturate.
bool ScanInteger(const char*& text, int* value);

// Reads a finite number after white space as " %lf" does; text moves behind it. What is refused leaves value alone.
bool ScanReal(const char*& text, double* value);

// A finite number as a 32-bit one; beyond its range the largest.
float NarrowReal(double value);

// The first character that isn't white space.
const char* SkipWhiteSpace(const char* text);

// Reads a word after white space as " %3s" does for a width of 3, into word[width + 1]; text moves behind it.
bool ScanWord(const char*& text, int width, char* word);

// Skips a word after white space as "%*s" does.
bool SkipWord(const char*& text);

// Reads a word of any length after white space into word[width + 1]; what is beyond the width is dropped.
bool ReadWord(std::FILE* file, int width, char* word);

// A letter in lower case, by the rules of the C locale.
char LowerCase(char c);

// Comparison of whole texts, and of the beginning of a text, regardless of case.
bool EqualIgnoringCase(const char* a, const char* b);
bool BeginsIgnoringCase(const char* text, const char* beginning);

// Read a number on lines of its own as "%ld\n" and "%lf\n" do: white space before and all white space after it, empty
// lines included, is skipped. Integers saturate at 32 bits; the real must be finite.
bool ReadInteger(std::FILE* file, int* value);
bool ReadReal(std::FILE* file, double* value);

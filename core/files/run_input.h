// SPDX-License-Identifier: MIT
// The reader that both kinds of run share: opens the input file under a recovery frame and reads it by its kind.
#pragma once

// Reads InputFilePath into Run; sets ActiveRunKind as its last act. Every failure is a fatal error that names the
// file: InputFileNotOpened, ParametersAndSpectrumAtOnce if it asks for a spectrum and for parameters, and those of its
// kind of file.
void ReadRunInput();

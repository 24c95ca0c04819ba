// SPDX-License-Identifier: MIT
// The texts of --help and --version. What the build knows of itself comes from CMakeLists.txt.
#include "shell/command_line_help.h"

#include "numerics/instruction_set.h"
#include "velkoran_version.h"

#include <cstdio>
#include <cstring>

static constexpr char HelpText[] =
    R"(Usage: velkoran PARAMDIR WORKDIR KIND LOGFILE
       velkoran --help
       velkoran --version

One process does one job for nuclear magnetic resonance: it reads a text file,
computes, writes a text file and quits.

Arguments:
  PARAMDIR  directory of the atom types and parameters; a spectrum doesn't use
            it, but it stands on the command line
  WORKDIR   directory of the input file and the output file
  KIND      1  parameters of a molecule: shieldings and couplings
            2  a spectrum of a spin system
            Anything else is taken for 1.
  LOGFILE   path of the log; without it there is no log

A path can't hold blanks. A directory with the name of a file in it has at
most 128 characters.

Files:
  PARAMDIR/nmrtype.txt   read for kind 1: the atom types
  PARAMDIR/nmr_shft.abp  read for kind 1: the parameters for shielding
  PARAMDIR/nmr_cupl.abp  read for kind 1: the parameters for coupling
  WORKDIR/nmrparam.in    read for kind 1: the molecule
  WORKDIR/nmrparam.out   written for kind 1: shieldings and couplings
  WORKDIR/nmrspect.in    read for kind 2: the spin system
  WORKDIR/nmrspect.out   written for kind 2: the lines of the spectrum
  LOGFILE                the listing of the run is appended to it

Signals:
  SIGTERM, SIGINT and SIGHUP stop a run; the output file is left as it was.

Exit code:
  0 on every regular way out, of a failed run as well. A run is judged by its
  output file: a line that begins with "ERRMSG: " says why there is no result.

Example:
  cp -r /usr/share/doc/velkoran/examples/methane .
  velkoran /usr/share/velkoran/parameters/published methane 1 methane/run.log
  cat methane/nmrparam.out
)";

static void PrintVersion() {
    std::printf("velkoran %s\n", VELKORAN_VERSION);
    std::printf("compiler: %s\n", VELKORAN_COMPILER);
    std::printf("build type: %s\n", VELKORAN_BUILD_TYPE);
    std::printf("processor: %s\n", VELKORAN_PROCESSOR);
    std::printf("vector kernels: %s", NameOf(BaselineSet));
    for (int set = BaselineSet + 1; set < InstructionSetCount; ++set) {
        std::printf(", %s", NameOf(static_cast<InstructionSet>(set)));
    }
    std::printf("; in use here: %s\n", NameOf(InstructionSetInUse()));
}

bool AnswerCommandLine(int argc, const char* const* argv, int* exitCode) {
    if (argc < 2) {
        return false;
    }
    if (std::strcmp(argv[1], "--help") == 0) {
        std::fputs(HelpText, stdout);
    } else if (std::strcmp(argv[1], "--version") == 0) {
        PrintVersion();
    } else {
        return false;
    }
    *exitCode = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
    return true;
}

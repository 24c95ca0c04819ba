// SPDX-License-Identifier: MIT
// Joins directories and names.
#include "ground/file_path.h"

#include "ground/fatal_error.h"
#include "ground/process_data.h"

#include <cstdio>
#include <cstring>

static constexpr std::size_t ComposedLimit = 128;  // characters of a name and its directory

void ComposePath(const char* name, const char* directory, char* result) {
    result[0] = '\0';
    if (name[0] == '\\') {
        std::snprintf(result, FilePathSize, "%s", name);
        return;
    }
    if (std::strlen(name) + std::strlen(directory) > ComposedLimit) {
        char text[2 * BUFSIZ];
        std::snprintf(text, sizeof text, "The length of the file name (%s) plus its path (%s) is too big.", name,
                      directory);
        WriteFatalFile(text);
    }
    std::strcpy(result, directory);
    std::strcat(result, name);
}

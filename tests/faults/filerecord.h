#pragma once

#include <cstdint>

/// One operation on a file, as the recorder writes it: this head, the path, the data.
struct FileRecord
{
    enum Kind : std::uint32_t {
        Create,
        Write,    ///< data at offset
        Truncate, ///< to the length in offset
        Sync,     ///< of a file's content or, for the folder itself, of its entries
        Rename,   ///< data: the new path
        Unlink,
        Mark, ///< offset: the number that the program gave
    };
    Kind kind;
    std::uint32_t pathSize;
    std::uint64_t offset;
    std::uint64_t dataSize;
};

/// Environment of the recorded program: the folder whose files are watched, and the file that the records go
/// to.
constexpr const char* recordedFolderVariable = "RECORDED_FOLDER";
constexpr const char* recordVariable = "FILE_RECORD";

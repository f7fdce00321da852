#pragma once

#include "platform/hvaudio/files/regularfile.h"

#include <memory>
#include <string>

namespace hvaudio {

/// A file that takes another one's place in one step when it is complete, so that whoever looks finds the old
/// contents or the new ones, and after a failure the old ones.
///
/// It is written under a name of its own beside its target ("unfinished-" and a random number), never over a
/// file that is there. Symbolic links are followed, and what they lead to is replaced. One thread at a time.
class Replacement
{
public:
    /// Null, and one readable sentence in `error`, when `path` names something other than a regular file (a
    /// folder, a device, a pipe), a file without leave to write, or a place where no file can be made.
    static std::unique_ptr<Replacement> create(const std::string& path, std::string& error);
    /// The unfinished file goes; the target is as it was.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Open for writing; owned here. Its mode is the target's, or that of any new file.
    int descriptor() const { return m_file.get(); }
    /// Takes the target's place once what was written has reached the medium, which is waited for; after a
    /// power cut the old file or the new one is there. False and a sentence in `error` when that fails. Once.
    bool finish(std::string& error);

private:
    Replacement() = default;
    Descriptor m_file;
    std::string m_name;       ///< as the caller knows it
    std::string m_target;     ///< where its links lead
    std::string m_unfinished; ///< empty once it has become the target
};

} // namespace hvaudio

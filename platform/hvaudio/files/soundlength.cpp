#include "platform/hvaudio/files/soundlength.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace hvaudio {

namespace {

using Bytes = std::vector<unsigned char>;
constexpr std::size_t piece = 65536; ///< read at once
enum class Order { Little, Big };

struct File
{
    int descriptor;
    std::uint64_t size;

    /// Fewer bytes where the file ends.
    Bytes read(std::uint64_t at, std::size_t count) const
    {
        Bytes bytes(at < size ? std::size_t(std::min<std::uint64_t>(count, size - at)) : 0);
        const ssize_t got = bytes.empty() ? 0 : pread(descriptor, bytes.data(), bytes.size(), off_t(at));
        bytes.resize(std::size_t(std::max<ssize_t>(got, 0)));
        return bytes;
    }
    bool hasLess(std::uint64_t start, std::uint64_t count) const
    {
        return start > size || count > size - start;
    }
};

bool says(const Bytes& bytes, std::size_t at, const char* word)
{
    const std::size_t length = std::strlen(word);
    return at + length <= bytes.size() && std::memcmp(bytes.data() + at, word, length) == 0;
}

std::uint64_t number(const Bytes& bytes, std::size_t at, int count, Order order)
{
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[at + std::size_t(order == Order::Big ? i : count - 1 - i)];
    return value;
}

/// What writers leave in the header of a stream. The largest sizes stand there less what goes before the
/// sound or doesn't fill a frame.
bool isUnknown(std::uint64_t size, int sizeBytes)
{
    constexpr std::uint64_t slack = 65536;
    if (size == 0)
        return true;
    if (sizeBytes == 8)
        return size >= std::uint64_t(INT64_MAX) - slack;
    const auto justBelow = [size](std::uint64_t limit) { return size <= limit && size + slack > limit; };
    // The third one: SoX's, in AIFF.
    return justBelow(0xffffffff) || justBelow(0x80000000) || justBelow(0x7f000000 + slack);
}

/// A file of chunks, each with a name and a size.
struct Chunked
{
    const char* magic;
    const char* sound; ///< the chunk that holds it
    int header;        ///< bytes before the first chunk
    int nameBytes, sizeBytes;
    Order order;
    bool countsItself; ///< the size includes name and size
    int alignment;     ///< of the chunks' starts
};

// clang-format off
constexpr Chunked chunkedFormats[] = {
    {"RIFF", "data", 12,  4, 4, Order::Little, false, 2}, // WAV
    {"RIFX", "data", 12,  4, 4, Order::Big,    false, 2}, // WAV in the other byte order
    {"RF64", "data", 12,  4, 4, Order::Little, false, 2}, // EBU Tech 3306
    {"BW64", "data", 12,  4, 4, Order::Little, false, 2}, // Rec. ITU-R BS.2088
    {"riff", "data", 40, 16, 8, Order::Little, true,  8}, // Wave64
    {"FORM", "SSND", 12,  4, 4, Order::Big,    false, 2}, // AIFF, AIFC
    {"caff", "data",  8,  4, 8, Order::Big,    false, 1}, // Core Audio
};
// clang-format on

/// The chunk that holds the sound.
struct SoundChunk
{
    std::uint64_t start = 0; ///< of the sound; 0: there is no such chunk
    std::uint64_t size = 0;
    HeaderNumber number = {}; ///< where the size stands, and as what
    bool isUnknown = false;
};

SoundChunk soundChunk(const File& file, const Chunked& format)
{
    constexpr int mostChunks = 1000; // nonsense doesn't keep us long
    const std::size_t head = std::size_t(format.nameBytes + format.sizeBytes);
    const std::uint64_t itself = format.countsItself ? head : 0;
    const bool bigEndian = format.order == Order::Big;
    std::optional<HeaderNumber> longSize;
    std::uint64_t at = std::uint64_t(format.header);
    for (int n = 0; n < mostChunks; ++n) {
        const Bytes chunk = file.read(at, head + 16);
        if (chunk.size() < head)
            break;
        HeaderNumber size = {at + std::uint64_t(format.nameBytes), format.sizeBytes, bigEndian, 0};
        size.value = number(chunk, std::size_t(format.nameBytes), format.sizeBytes, format.order);
        if (says(chunk, 0, format.sound)) {
            // Where 32 bits don't do, the size stands in the chunk "ds64".
            if (size.value == 0xffffffff && longSize)
                size = *longSize;
            return {at + head, size.value - std::min(size.value, itself), size,
                    isUnknown(size.value, size.bytes)};
        }
        if (says(chunk, 0, "ds64") && chunk.size() >= head + 16)
            longSize = {at + head + 8, 8, false, number(chunk, head + 8, 8, Order::Little)};
        const std::uint64_t contents = size.value - std::min(size.value, itself);
        if (file.hasLess(at + head, contents))
            break;
        const auto alignment = std::uint64_t(format.alignment);
        at = (at + head + contents + alignment - 1) / alignment * alignment;
    }
    return {};
}

/// Whether another chunk stands there, whole and with a name.
bool isChunk(const File& file, const Chunked& format, std::uint64_t at)
{
    const std::size_t head = std::size_t(format.nameBytes + format.sizeBytes);
    const Bytes chunk = file.read(at, head);
    if (chunk.size() < head)
        return false;
    const bool named =
        std::all_of(chunk.begin(), chunk.begin() + 4, [](unsigned char c) { return c >= ' ' && c <= '~'; });
    return named && !file.hasLess(at + head, number(chunk, std::size_t(format.nameBytes), format.sizeBytes,
                                                    format.order));
}

const Chunked* chunkedFormat(const Bytes& magic)
{
    const auto found = std::find_if(std::begin(chunkedFormats), std::end(chunkedFormats),
                                    [&](const Chunked& format) { return says(magic, 0, format.magic); });
    return found == std::end(chunkedFormats) ? nullptr : found;
}

bool auEndsEarly(const File& file)
{
    const Bytes header = file.read(0, 12);
    if (header.size() < 12)
        return false;
    const std::uint64_t size = number(header, 8, 4, Order::Big);
    return !isUnknown(size, 4) && file.hasLess(number(header, 4, 4, Order::Big), size);
}

/// RFC 3533: a page has at most 65307 bytes, and the last one says so.
bool oggEndsEarly(const File& file)
{
    constexpr std::uint64_t largestPage = 65307;
    constexpr std::size_t header = 27;
    constexpr int endOfStream = 4;
    const std::uint64_t from = file.size - std::min(file.size, 2 * largestPage);
    const Bytes tail = file.read(from, std::size_t(2 * largestPage));
    for (std::size_t at = tail.size(); at-- > 0;) {
        if (!says(tail, at, "OggS") || (at + 4 < tail.size() && tail[at + 4] != 0))
            continue;
        if (at + header > tail.size() || at + header + tail[at + 26] > tail.size())
            return true;
        std::uint64_t length = header + tail[at + 26];
        for (std::size_t i = 0; i < tail[at + 26]; ++i)
            length += tail[at + header + i];
        return file.hasLess(from + at, length) || !(tail[at + 5] & endOfStream);
    }
    return false;
}

/// Bytes before the first frame: "ID3", version, flags and a size of four times seven bits; one or more.
std::uint64_t tagBytes(const File& file)
{
    constexpr int footerFlag = 0x10;
    std::uint64_t at = 0;
    for (Bytes tag; tag = file.read(at, 10), tag.size() == 10 && says(tag, 0, "ID3");) {
        std::uint64_t size = 0;
        for (std::size_t i = 6; i < 10; ++i)
            size = size << 7 | (tag[i] & 0x7f);
        at += 10 + size + (tag[5] & footerFlag ? 10 : 0);
    }
    return at;
}

/// ISO/IEC 11172-3 and 13818-3: a header of four bytes before each frame, which gives its length.
struct Layer3Frame
{
    bool valid = false;
    bool version1 = false, mono = false, checksum = false;
    std::uint64_t length = 0;
};

Layer3Frame layer3Frame(const Bytes& bytes, std::size_t at)
{
    // clang-format off
    static constexpr int kilobits[2][16] = {
        {0,  8, 16, 24, 32, 40, 48, 56,  64,  80,  96, 112, 128, 144, 160, 0},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
    };
    // clang-format on
    static constexpr int rates[4] = {44100, 48000, 32000, 0};
    Layer3Frame frame;
    if (at + 4 > bytes.size() || bytes[at] != 0xff || (bytes[at + 1] & 0xe6) != 0xe2)
        return frame;
    const int version = bytes[at + 1] >> 3 & 3; // 3: 1, 2: 2, 0: 2.5
    frame.version1 = version == 3;
    const int rate = rates[bytes[at + 2] >> 2 & 3] / (frame.version1 ? 1 : version == 2 ? 2 : 4);
    const int bits = 1000 * kilobits[frame.version1][bytes[at + 2] >> 4];
    frame.valid = version != 1 && rate > 0 && bits > 0;
    if (!frame.valid)
        return frame;
    frame.mono = (bytes[at + 3] & 0xc0) == 0xc0;
    frame.checksum = !(bytes[at + 1] & 1);
    frame.length = std::uint64_t((frame.version1 ? 144 : 72) * bits / rate + (bytes[at + 2] >> 1 & 1));
    return frame;
}

/// Encoders put a tag into the first frame, which is silent then: "Xing" or "Info" behind the side
/// information, "VBRI" at a fixed place. Bytes from this frame on by its word, 0 for none.
std::uint64_t bytesByTag(const Bytes& bytes, std::size_t at, const Layer3Frame& frame)
{
    const std::size_t side = frame.version1 ? (frame.mono ? 17 : 32) : (frame.mono ? 9 : 17);
    const std::size_t behind = at + 4 + side;
    for (const std::size_t tag : {behind, behind + (frame.checksum ? 2 : 0)}) {
        if ((!says(bytes, tag, "Xing") && !says(bytes, tag, "Info")) || tag + 16 > bytes.size())
            continue;
        const std::uint64_t flags = number(bytes, tag + 4, 4, Order::Big);
        return flags & 2 ? number(bytes, tag + (flags & 1 ? 12 : 8), 4, Order::Big) : 0;
    }
    return says(bytes, at + 36, "VBRI") && at + 50 <= bytes.size() ? number(bytes, at + 46, 4, Order::Big)
                                                                   : 0;
}

struct FirstFrame
{
    std::uint64_t at = 0;
    std::uint64_t promised = 0; ///< bytes from there on, by the tag; 0: there is none
    Layer3Frame frame;
};

FirstFrame firstFrame(const File& file)
{
    const std::uint64_t from = tagBytes(file);
    const Bytes bytes = file.read(from, piece);
    for (std::size_t at = 0; at + 4 <= bytes.size(); ++at) {
        const Layer3Frame frame = layer3Frame(bytes, at);
        if (!frame.valid)
            continue;
        const std::uint64_t promised = bytesByTag(bytes, at, frame);
        // What looks like a frame is one where another one follows.
        if (promised > 0 || layer3Frame(bytes, at + std::size_t(frame.length)).valid)
            return {from + at, promised, frame};
    }
    return {};
}

/// Without a tag a file that was cut off still ends within a frame.
bool mpegEndsEarly(const File& file)
{
    const FirstFrame first = firstFrame(file);
    if (first.promised > 0)
        return !isUnknown(first.promised, 4) && file.hasLess(first.at, first.promised);
    std::uint64_t from = first.at;
    std::size_t at = 0;
    Bytes bytes;
    for (Layer3Frame frame = first.frame; frame.valid; frame = layer3Frame(bytes, at)) {
        if (file.hasLess(from + at, frame.length))
            return true;
        at += std::size_t(frame.length);
        if (at + 4 > bytes.size()) {
            from += at;
            at = 0;
            bytes = file.read(from, piece);
        }
    }
    return false;
}

/// Size 0 where the descriptor is of no use.
File fileOf(int descriptor)
{
    struct stat is = {};
    const bool known = fstat(descriptor, &is) == 0 && is.st_size > 0;
    return {descriptor, known ? std::uint64_t(is.st_size) : 0};
}

} // namespace

bool endsEarly(int descriptor)
{
    const File file = fileOf(descriptor);
    const Bytes magic = file.read(0, 4);
    if (const Chunked* const format = chunkedFormat(magic)) {
        const SoundChunk sound = soundChunk(file, *format);
        return sound.start > 0 && !sound.isUnknown && file.hasLess(sound.start, sound.size);
    }
    if (says(magic, 0, ".snd"))
        return auEndsEarly(file);
    if (says(magic, 0, "OggS"))
        return oggEndsEarly(file);
    if (says(magic, 0, "fLaC"))
        return false; // its decoder knows
    return mpegEndsEarly(file);
}

std::optional<HeaderNumber> sizeLeftOpen(int descriptor)
{
    const File file = fileOf(descriptor);
    const Chunked* const format = chunkedFormat(file.read(0, 4));
    const SoundChunk sound = format ? soundChunk(file, *format) : SoundChunk();
    if (sound.start == 0 || !sound.isUnknown || sound.start >= file.size)
        return {};
    if (sound.size == 0 && isChunk(file, *format, sound.start))
        return {};
    HeaderNumber size = sound.number;
    size.value = file.size - sound.start +
                 (format->countsItself ? std::uint64_t(format->nameBytes + format->sizeBytes) : 0);
    if (size.bytes == 4)
        size.value = std::min<std::uint64_t>(size.value, 0xffffffff);
    return size;
}

std::optional<std::uint64_t> untaggedMp3(int descriptor)
{
    const File file = fileOf(descriptor);
    const Bytes magic = file.read(0, 4);
    if (chunkedFormat(magic) || says(magic, 0, ".snd") || says(magic, 0, "OggS") || says(magic, 0, "fLaC"))
        return {};
    const FirstFrame first = firstFrame(file);
    return first.frame.valid && first.promised == 0 ? std::optional<std::uint64_t>(first.at) : std::nullopt;
}

} // namespace hvaudio

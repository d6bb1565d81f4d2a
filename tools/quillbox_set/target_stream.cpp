#include "target_stream.h"

namespace quillbox_set {

namespace {

constexpr std::size_t bufferBytes = 65536;

}

TargetBuffer::TargetBuffer(archive::GrowingFile& target) : target_(target), buffer_(bufferBytes)
{
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

TargetBuffer::int_type TargetBuffer::overflow(int_type character)
{
    if (sync() != 0)
        return traits_type::eof();
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    return sputc(traits_type::to_char_type(character));
}

int TargetBuffer::sync()
{
    const bool good = target_.write(std::as_bytes(std::span(pbase(), pptr())));
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    return good ? 0 : -1;
}

}  // namespace quillbox_set

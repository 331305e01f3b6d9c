#include "standin/pipe/Messages.h"

#include "standin/object/ObjectBytes.h"
#include "standin/pipe/Pipe.h"

namespace standin
{
namespace
{
enum class AnswerKind : uint8_t
{
    Object,
    Outcome
};
} // namespace

std::vector<BYTE> Encode(const CCallMessage& message)
{
    std::vector<BYTE> bytes;
    CByteWriter writer(bytes);
    writer.Number(message.What);
    writer.Text(message.Service);
    writer.Text(message.NameSpace);
    writer.Number(static_cast<int32_t>(message.Flags));
    writer.Text(message.Subject);
    writer.Text(message.Detail);
    writer.Block(BytesOf(message.Context.Get()));
    writer.Block(BytesOf(message.Object.Get()));
    return bytes;
}

CCallMessage DecodeCall(std::span<const BYTE> bytes)
{
    CByteReader reader(bytes, kMaxNesting);
    CCallMessage message;
    message.What = reader.Number<Operation>();
    message.Service = reader.Text();
    message.NameSpace = reader.Text();
    message.Flags = reader.Number<int32_t>();
    message.Subject = reader.Text();
    message.Detail = reader.Text();
    message.Context = ContextFrom(reader.Block());
    message.Object = ObjectFrom(reader.Block());
    return message;
}

std::vector<BYTE> Encode(const CAnswer& answer)
{
    std::vector<BYTE> bytes;
    CByteWriter writer(bytes);
    if (const auto* object = std::get_if<ComPtr<IWbemClassObject>>(&answer))
    {
        writer.Number(AnswerKind::Object);
        writer.Block(BytesOf(object->Get()));
        return bytes.size() > kLargestFrame ? Encode(CAnswer(COutcome(kTooLong))) : bytes;
    }
    const COutcome& outcome = std::get<COutcome>(answer);
    writer.Number(AnswerKind::Outcome);
    writer.Number(static_cast<int32_t>(outcome.Result));
    writer.Number(static_cast<uint8_t>(outcome.Text ? 1 : 0));
    writer.Text(outcome.Text.View());
    writer.Block(BytesOf(outcome.Status.Get()));
    writer.Block(BytesOf(outcome.Object.Get()));
    return bytes.size() > kLargestFrame ? Encode(CAnswer(COutcome(kTooLong))) : bytes;
}

CAnswer DecodeAnswer(std::span<const BYTE> bytes)
{
    CByteReader reader(bytes, kMaxNesting);
    if (reader.Number<AnswerKind>() == AnswerKind::Object)
        return ObjectFrom(reader.Block());
    COutcome outcome(reader.Number<int32_t>());
    const bool hasText = reader.Number<uint8_t>() != 0;
    const std::wstring text = reader.Text();
    if (hasText)
        outcome.Text = CBstr(std::wstring_view(text));
    outcome.Status = ObjectFrom(reader.Block());
    outcome.Object = ObjectFrom(reader.Block());
    return outcome;
}
} // namespace standin

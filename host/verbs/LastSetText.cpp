// lastset: the last SET, phase by phase.
#include "host/ErrorStatus.h"
#include "host/verbs/VerbTexts.h"

namespace VLK::host {

namespace {

const char* NameOfVersion(EProtocol protocol)
{
    return protocol == eSnmpV1 ? "SNMPv1" : protocol == eSnmpV2c ? "SNMPv2c" : "SNMPv3";
}

std::string WhoText(const SLastSet& last)
{
    std::string name = InQuotes(TextOf(last.security.securityName));
    if (last.isNameSecret)
        name = "a community (not shown)";
    else if (last.isConsole && last.security.securityName.empty())
        name = "the operator";
    std::string text =
        last.isConsole
            ? name + " with " + NameOfModel(last.security.securityModel) + " at the console"
            : name + " with " + NameOfVersion(last.protocol) + " from " + last.remote.ToString();
    if (!last.context.empty())
        text += " in context " + InQuotes(TextOf(last.context));
    return text;
}

std::string BindingText(const SSetBinding& kept)
{
    std::string text =
        TextOf(kept.binding.Name().ToString()) + " = " + TextOf(kept.binding.Value().ValToStr());
    if (kept.cutOctets)
        text += " (and " + std::to_string(kept.cutOctets) + " octets more)";
    return text;
}

// Positions count from 0, what is printed from 1.
std::string RunText(const SSetStep& step)
{
    if (step.count <= 1)
        return "binding " + std::to_string(step.first + 1);
    return "bindings " + std::to_string(step.first + 1) + " to " +
           std::to_string(step.first + step.count);
}

std::string StepText(const SSetStep& step)
{
    std::string text = RunText(step) + " of " + step.module + ": ";
    if (step.status == eSnmpNoError)
        return text + "done";
    if (step.status == SSetStep::kThrew)
        return text + "failed, the module threw";
    return text + LabelErrorStatus(step.status) + " at binding " + std::to_string(step.index + 1);
}

void AddPhase(CLines& lines, const char* name, const SSetPhase& phase)
{
    if (phase.calls == 0) {
        lines.push_back(Row(name, "not run"));
        return;
    }
    for (unsigned i = 0; i < phase.Kept(); ++i)
        lines.push_back(Row(i == 0 ? name : "", StepText(phase.steps[i])));
    if (phase.calls == phase.Kept())
        return;
    lines.push_back(
        Row("", "and " + std::to_string(phase.calls - phase.Kept()) + " more runs of bindings"));
    // It may be among those that are shown.
    if (phase.hasFailed && phase.failed.first > phase.steps.back().first)
        lines.push_back(Row("", StepText(phase.failed)));
}

// What the phases do not tell.
std::string NoteText(const SLastSet& last)
{
    switch (last.refusal) {
    case eVacmNoSuchContext:
        return "there is no such context";
    case eVacmNoGroupName:
        return "who asked is in no group";
    case eVacmNoAccessEntry:
        return "no access entry of the group fits";
    case eVacmNoSuchView:
        return "the group has no write view, or one without rows";
    case eVacmNotInView:
        return "it is not in the write view";
    case eVacmAllowed:
        break;
    }
    return last.save == eSaveFailed ? "it could not be saved" : "";
}

std::string AnswerText(const SLastSet& last)
{
    std::string text = LabelErrorStatus(last.status);
    if (last.status != eSnmpNoError)
        text += last.index > 0 ? " at binding " + std::to_string(last.index) : " at no binding";
    const bool isV1 = last.protocol == eSnmpV1;
    const int sent = isV1 ? StatusForV1(last.status) : StatusForV2(last.status, true);
    if (!last.isConsole && sent != last.status)
        text += std::string(", sent as ") + LabelErrorStatus(sent);
    return text;
}

} // namespace

CLines LastSetLines(const std::optional<SLastSet>& last)
{
    if (!last)
        return {"there was no set yet"};
    CLines lines{Row("at", TimeText(last->at)), Row("by", WhoText(*last))};
    for (unsigned i = 0; i < last->kept; ++i)
        lines.push_back(Row(i == 0 ? "bindings" : "",
                            std::to_string(i + 1) + ". " + BindingText(last->bindings[i])));
    if (last->count == 0)
        lines.push_back(Row("bindings", "none"));
    if (last->count > last->kept)
        lines.push_back(Row("", "and " + std::to_string(last->count - last->kept) + " more"));
    AddPhase(lines, "test", last->phases[ePhaseTest]);
    AddPhase(lines, "commit", last->phases[ePhaseCommit]);
    AddPhase(lines, "undo", last->phases[ePhaseUndo]);
    AddPhase(lines, "cleanup", last->phases[ePhaseCleanup]);
    const std::string note = NoteText(*last);
    lines.push_back(Row("answer", AnswerText(*last) + (note.empty() ? "" : ": " + note)));
    return lines;
}

} // namespace VLK::host

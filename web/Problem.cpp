#include "web/Problem.h"

#include "management/CommandData.h"
#include "web/CommandAnswer.h"

#include <sstream>

namespace web {

using namespace management;

namespace {

int StatusOf(ErrorCode code)
{
    switch (code) {
    case ErrorCode::invalid:
        return 422;
    case ErrorCode::notFound:
        return 404;
    case ErrorCode::conflict:
    case ErrorCode::confirmationRequired:
        return 409;
    case ErrorCode::isProtected:
        return 403;
    case ErrorCode::database:
        return 503;
    default:
        return 500;
    }
}

} // namespace

Problem PasswordRequired() { return {403, "password_required", Translatable("this asks for your password again")}; }

Problem OutOfMemory() { return {500, "failed", Translatable("out of memory; look before you try again")}; }

Problem ServerFailed() { return {500, "failed", Translatable("the server has failed; look before you try again")}; }

Sentence WithArticle(Level level) { return FillPattern("an administrator of the level {}", NameOf(level)); }

Response ResponseOf(const Problem& problem)
{
    std::ostringstream out;
    JsonWriter json(out, JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("v", std::int64_t{1});
    json.WriteMember("type", TextValue("/problems/" + std::string(problem.code)));
    json.WriteMember("status", std::int64_t{problem.status});
    json.WriteMember("code", TextValue(std::string(problem.code)));
    json.WriteMember("detail", SentenceValue(problem.detail));
    if (!problem.candidates.empty()) {
        WriteTexts(json, "candidates", problem.candidates);
    }
    if (problem.plan) {
        WritePlan(json, *problem.plan, problem.planDigest);
    }
    if (!problem.current.empty()) {
        json.WriteName("current");
        json.BeginObject();
        WriteRecord(json, problem.current);
        json.End();
        json.WriteMember("version", TextValue(problem.currentVersion));
    }
    json.End();
    return {problem.status, "application/problem+json", std::move(out).str()};
}

Problem ProblemOf(const Error& error)
{
    return {StatusOf(error.Code()), NameOf(error.Code()), error.Why(), error.Candidates()};
}

} // namespace web

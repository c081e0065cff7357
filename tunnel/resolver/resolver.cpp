#include "tunnel/resolver/resolver.h"

#include <algorithm>
#include <utility>

#include "tunnel/resolver/local_names.h"

namespace quillmar::tunnel {
namespace {

using std::chrono::seconds;

// Queries with the same key get the same answer, apart from its id and the case of its name. Begins with the
// name in lower case.
std::string keyOf(const Query& query) {
  std::string key;
  key.reserve(query.question.name.size() + 5);
  appendLowerCased(key, query.question.name);
  append16(key, query.question.type);
  append16(key, query.question.klass);
  const bool wantsProof = query.edns && query.edns->dnssecOk;
  key += static_cast<char>((wantsProof ? 1 : 0) | (query.checkingDisabled ? 2 : 0) |
                           (query.authenticData ? 4 : 0));
  return key;
}

Failure failureOf(AnswerFault fault) {
  switch (fault) {
    case AnswerFault::cutShort:
      return {Cause::cutShort};
    case AnswerFault::ofAnotherQuestion:
      return {Cause::ofAnotherQuestion};
    case AnswerFault::malformed:
      break;
  }
  return {Cause::malformed};
}

Outcome outcomeOf(std::variant<Fetched, Failure> result, const Question& question) {
  auto* fetched = std::get_if<Fetched>(&result);
  if (fetched == nullptr) {
    return std::get<Failure>(std::move(result));
  }
  auto parsed = Answer::parse(std::move(fetched->message), question, fetched->age);
  if (const auto* fault = std::get_if<AnswerFault>(&parsed)) {
    return failureOf(*fault);
  }
  return std::get<Answer>(std::move(parsed));
}

// Rounded up, so that a client never keeps an answer longer than the cache does.
seconds elapsedBetween(Time start, Time now) { return std::chrono::ceil<seconds>(now - start); }

std::string replyFor(const Query& query, const Outcome& outcome, seconds elapsed) {
  if (const auto* answer = std::get_if<Answer>(&outcome)) {
    return answer->toQuery(query, elapsed);
  }
  const auto& failure = std::get<Failure>(outcome);
  return errorReply(query, rcode::servFail,
                    extendedError(extendedErrorCode(failure.cause), sentence(failure)));
}

}  // namespace

Resolver::~Resolver() {
  for (const auto& [ticket, question] : underWay_) {
    upstream_.cancel(ticket);
  }
}

void Resolver::ask(Time now, std::string_view message, Channel channel, Reply reply) {
  auto parsed = parseQuery(message);
  if (const auto* refusal = std::get_if<Refusal>(&parsed)) {
    reply(refusalReply(*refusal));
  } else if (auto* query = std::get_if<Query>(&parsed)) {
    resolve(now, {std::move(*query), channel, std::move(reply)});
  }
}

void Resolver::resolve(Time now, Waiter waiter) {
  const Query& query = waiter.query;
  const auto answerAtOnce = [&](std::string message) {
    waiter.reply(fitted(std::move(message), query, waiter.channel));
  };
  auto key = keyOf(query);
  const auto name = std::string_view(key).substr(0, query.question.name.size());
  if (auto local = localReply(query, name)) {
    return answerAtOnce(std::move(*local));
  }
  if (const auto* entry = known(now, key)) {
    return answerAtOnce(replyFor(query, entry->outcome, elapsedBetween(entry->came, now)));
  }
  if (waiting_ >= mostWaiting) {
    const Failure failure{Cause::tooMany};
    log_.failed(now, failure);
    return answerAtOnce(replyFor(query, failure, seconds(0)));
  }
  ++waiting_;
  if (const auto asked = ticketByKey_.find(key); asked != ticketByKey_.end()) {
    underWay_.at(asked->second).waiters.push_back(std::move(waiter));
  } else {
    askUpstream(now, std::move(key), std::move(waiter));
  }
}

const Cache::Entry* Resolver::known(Time now, const std::string& key) {
  const auto* const entry = cache_.find(now, key);
  const bool isOutdated =
      entry != nullptr && std::holds_alternative<Failure>(entry->outcome) && entry->came < lastChange_;
  return isOutdated ? nullptr : entry;
}

void Resolver::askUpstream(Time now, std::string key, Waiter waiter) {
  const Ticket ticket = ++lastTicket_;
  auto question = writeQuestion(waiter.query);
  auto& underWay = underWay_.emplace(ticket, UnderWay{std::move(key), now + patience}).first->second;
  ticketByKey_.emplace(underWay.key, ticket);
  underWay.waiters.push_back(std::move(waiter));
  upstream_.ask(now, ticket, std::move(question),
                [this, ticket](Time then, std::variant<Fetched, Failure> result) {
                  fetched(then, ticket, std::move(result));
                });
}

void Resolver::fetched(Time now, Ticket ticket, std::variant<Fetched, Failure> result) {
  // All waiters ask the same.
  const auto& question = underWay_.at(ticket).waiters.front().query.question;
  auto outcome = outcomeOf(std::move(result), question);
  if (std::holds_alternative<Answer>(outcome)) {
    log_.answered(now);
  }
  finish(now, ticket, std::move(outcome));
}

void Resolver::finish(Time now, Ticket ticket, Outcome outcome) {
  auto node = underWay_.extract(ticket);
  auto& [key, deadline, waiters, isForgotten] = node.mapped();
  waiting_ -= waiters.size();
  if (!isForgotten) {
    ticketByKey_.erase(key);
  }
  const auto* answer = std::get_if<Answer>(&outcome);
  if (answer == nullptr) {
    log_.failed(now, std::get<Failure>(outcome));
  }
  for (const auto& [query, channel, reply] : waiters) {
    reply(fitted(replyFor(query, outcome, seconds(0)), query, channel));
  }
  // After the replies, because no client waits for it.
  if (!isForgotten) {
    const bool failed = answer == nullptr || answer->isFailure();
    const auto life = failed ? holdOfFailure : answer->lifetime();
    cache_.put(now, std::move(key), std::move(outcome), life);
  }
}

void Resolver::forget() {
  cache_.clear();
  ticketByKey_.clear();
  for (auto& [ticket, question] : underWay_) {
    question.isForgotten = true;
  }
}

std::optional<Time> Resolver::wakeTime() const {
  return underWay_.empty() ? std::nullopt : std::optional(underWay_.begin()->second.deadline);
}

void Resolver::wake(Time now) {
  while (!underWay_.empty() && underWay_.begin()->second.deadline <= now) {
    const Ticket ticket = underWay_.begin()->first;
    upstream_.cancel(ticket);
    finish(now, ticket, Failure{Cause::late});
  }
}

}  // namespace quillmar::tunnel

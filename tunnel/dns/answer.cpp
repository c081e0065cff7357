#include "tunnel/dns/answer.h"

#include <algorithm>
#include <optional>

#include "tunnel/dns/reply.h"

namespace quillmar::tunnel {
namespace {

using std::chrono::seconds;

// Enough for a text that says what was blocked. Longer ones are not passed on.
constexpr std::size_t largestExtendedErrors = 512;

// Unused memory of an answer that is not worth a copy. The OPT record that was cut off leaves less.
constexpr std::size_t toleratedRoom = 64;

// The extended errors among the options of an OPT record.
std::string extendedErrorsIn(std::string_view options) {
  std::string errors;
  for (Reader reader(options, 0); reader.ok() && !reader.atEnd();) {
    const auto start = reader.at();
    const auto code = reader.number16();
    reader.bytes(reader.number16());
    if (reader.ok() && code == extendedErrorOption) {
      errors += options.substr(start, reader.at() - start);
    }
  }
  return errors.size() <= largestExtendedErrors ? errors : std::string();
}

// RFC 2181: a TTL with the top bit set counts as zero.
seconds lifeOf(std::uint32_t ttl) { return seconds(ttl > 0x7fffffffU ? 0 : ttl); }

// RFC 2308: the last number of an SOA limits how long the absence of a name is kept.
seconds lifeOf(const Record& record) {
  constexpr std::size_t fiveNumbers = 20;
  const auto life = lifeOf(record.ttl);
  return record.type == type::soa && record.data.size() > fiveNumbers
             ? std::min(life, lifeOf(get32(record.data, record.data.size() - 4)))
             : life;
}

bool isOf(const Question& question, Reader& reader) {
  const auto name = reader.plainName();
  const auto questionType = reader.number16();
  const auto questionClass = reader.number16();
  return reader.ok() && questionType == question.type && questionClass == question.klass &&
         areSameNames(name, question.name);
}

}  // namespace

// The properties of all records, collected in one pass.
struct Answer::Survey {
  bool answersQuestion = false;
  bool namesZone = false;
  std::optional<Record> opt{};
};

void Answer::take(const Record& record, Survey& survey) {
  if (record.type == type::opt) {
    survey.opt = record;
    return;
  }
  survey.namesZone = survey.namesZone || record.type == type::soa;
  lives_.push_back(static_cast<char16_t>(record.ttlAt));
  put32(message_, record.ttlAt, static_cast<std::uint32_t>(lifeOf(record).count()));
}

void Answer::limitLives(const Survey& survey, seconds age) {
  const bool exists = readHeader(message_)->rcode() == rcode::noError && survey.answersQuestion;
  const auto longest = exists ? longestLife : longestAbsence;
  lifetime_ = lives_.empty() || (!exists && !survey.namesZone) ? seconds(0) : longest;
  for (const std::size_t at : lives_) {
    const auto life = std::clamp(seconds(get32(message_, at)) - age, seconds(0), longest);
    put32(message_, at, static_cast<std::uint32_t>(life.count()));
    lifetime_ = std::min(lifetime_, life);
  }
}

std::variant<Answer, AnswerFault> Answer::parse(std::string message, const Question& question, seconds age) {
  const auto header = readHeader(message);
  if (!header || message.size() > largestMessage ||
      (header->flags & (flag::response | flag::opcode)) != flag::response) {
    return AnswerFault::malformed;
  }
  if ((header->flags & flag::truncated) != 0) {
    return AnswerFault::cutShort;
  }
  Answer answer;
  answer.message_ = std::move(message);
  Reader reader(answer.message_, headerSize);
  if (header->questions != 1 || !isOf(question, reader)) {
    return AnswerFault::ofAnotherQuestion;
  }

  Survey survey;
  unsigned additionals = 0;
  const unsigned ordinary = header->answers + unsigned{header->authorities};
  for (unsigned index = 0; index < ordinary + header->additionals; ++index) {
    const Record record = reader.record();
    if (!reader.ok() || (record.type == type::opt && index < ordinary)) {
      return AnswerFault::malformed;
    }
    answer.take(record, survey);
    if (survey.opt) {
      // The OPT record is removed, and names in later records may point past it. Nobody needs those records.
      break;
    }
    survey.answersQuestion =
        survey.answersQuestion ||
        (index < header->answers && (record.type == question.type || question.type == type::any));
    additionals += index < ordinary ? 0 : 1;
  }
  std::uint16_t code = header->rcode();
  if (survey.opt) {
    answer.extendedErrors_ = extendedErrorsIn(survey.opt->data);
    // A client that sent no OPT record can't receive the upper bits.
    code = survey.opt->ttl >> 24U != 0 ? rcode::servFail : code;
  }
  answer.isFailure_ = code != rcode::noError && code != rcode::nxDomain;
  if (code == rcode::servFail && answer.extendedErrors_.empty()) {
    answer.extendedErrors_ = extendedError(otherError, "The endpoint could not find the answer.");
  }
  answer.message_.resize(survey.opt ? survey.opt->start : reader.at());
  if (answer.message_.capacity() - answer.message_.size() > toleratedRoom) {
    answer.message_.shrink_to_fit();
  }
  put16(answer.message_, 2, static_cast<std::uint16_t>((header->flags & ~flag::rcode) | code));
  putAdditionals(answer.message_, static_cast<std::uint16_t>(additionals));
  answer.limitLives(survey, age);
  return answer;
}

std::size_t Answer::size() const {
  return sizeof *this + message_.capacity() + lives_.capacity() * sizeof(char16_t) +
         extendedErrors_.capacity();
}

std::string Answer::toQuery(const Query& query, seconds elapsed) const {
  std::string reply;
  reply.reserve(message_.size() + extendedErrors_.size() + 16);
  reply = message_;
  constexpr std::uint16_t clients = flag::recursionDesired | flag::checkingDisabled;
  const auto own = static_cast<std::uint16_t>((query.recursionDesired ? flag::recursionDesired : 0) |
                                              (query.checkingDisabled ? flag::checkingDisabled : 0));
  put16(reply, 0, query.id);
  put16(reply, 2, static_cast<std::uint16_t>((get16(reply, 2) & ~clients) | own | flag::recursionAvailable));
  reply.replace(headerSize, query.question.name.size(), query.question.name);
  for (const std::size_t at : lives_) {
    const auto left = std::max(seconds(get32(reply, at)) - elapsed, seconds(0));
    put32(reply, at, static_cast<std::uint32_t>(left.count()));
  }
  appendOpt(reply, query, extendedErrors_);
  return reply;
}

}  // namespace quillmar::tunnel

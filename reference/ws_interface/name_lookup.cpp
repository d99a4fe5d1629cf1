#include "reference/ws_interface/name_lookup.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "reference/common/guarded.h"
#include "reference/common/service_threads.h"
#include "reference/ws_interface/log.h"

namespace reference::ws {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

struct Question {
  asio::executor_work_guard<asio::io_context::executor_type> context;
  std::string host;
  std::string port;
  LookUpHandler handler;
  error_code error;
  Addresses addresses;
};

// The thread may end after the handler has been called, and must then own nothing of it, nor of the context.
void Answer(const std::shared_ptr<Question>& question) {
  asio::post(question->context.get_executor(), [question] {
    const Question answered = std::move(*question);
    answered.handler(answered.error, answered.addresses);
  });
}

// Without a log line: one would follow the other for as long as memory is short.
bool TryToAnswer(const std::shared_ptr<Question>& question) {
  try {
    Answer(question);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void LookUpNow(const std::shared_ptr<Question>& question) {
  question->error = asio::error::no_memory;
  Guarded(kLogTag, "a name's look-up", [&] {
    asio::io_context own(1);
    question->addresses =
        tcp::resolver(own).resolve(question->host, question->port, tcp::resolver::numeric_service, question->error);
  });
}

void Ask(const std::shared_ptr<Question>& question) {
  const bool isWanted = question.use_count() > 1;
  if (isWanted) {
    LookUpNow(question);
  } else {
    question->error = asio::error::operation_aborted;
  }
  // The context waits for the answer, however long there is no memory for handing it over, and nothing tells when there
  // is some again.
  while (!TryToAnswer(question)) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

class Crew {
 public:
  void Take(std::shared_ptr<Question> question) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (threads == kMaxLookUpThreads) return waiting.push_back(std::move(question));
    std::thread([this, question = std::move(question), ticket = ServiceThreadTicket()]() mutable {
      // At the end there is none, before the ticket goes, which says that nothing of this thread is left.
      for (; question; question = Next()) Ask(question);
    }).detach();
    ++threads;
  }

 private:
  // Nothing when the calling thread is to end.
  std::shared_ptr<Question> Next() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (waiting.empty()) {
      --threads;
      return nullptr;
    }
    std::shared_ptr<Question> next = std::move(waiting.front());
    waiting.pop_front();
    return next;
  }

  std::mutex mutex;
  std::size_t threads = 0;
  std::deque<std::shared_ptr<Question>> waiting;
};

// Never destroyed, for a look-up may outlast everything else; and the library stays loaded until the process ends.
Crew& TheCrew() {
  static Crew& crew = *new Crew;
  return crew;
}

}  // namespace

std::shared_ptr<const void> LookUp(asio::io_context& context, const std::string& host, std::uint16_t port,
                                   LookUpHandler handler) {
  auto question = std::make_shared<Question>(
      Question{asio::make_work_guard(context), host, std::to_string(port), std::move(handler), {}, {}});
  error_code notDigits;
  const asio::ip::address address = asio::ip::make_address(host, notDigits);
  if (!notDigits) {
    question->addresses = Addresses::create(tcp::endpoint(address, port), host, question->port);
    Answer(question);
  } else {
    TheCrew().Take(question);
  }
  return question;
}

}  // namespace reference::ws

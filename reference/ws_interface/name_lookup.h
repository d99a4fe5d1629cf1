// From a host's name to its addresses, on threads of the look-ups' own.
//
// A look-up cannot be interrupted and may hang for half a minute while the network is down. asio's resolvers of one
// context share one thread, on which it would hold up every other connection's. Here each has a thread, up to
// kMaxLookUpThreads in the process; when all of them hang, the next one waits for the first that ends.
//
// Threads: LookUp on the context's thread; the handler is called and destroyed there, never from inside LookUp.
// Ownership: the context stays at work, and so alive, until the handler has been called; the caller holds the wish for
// the answer.
#ifndef REFERENCE_WS_INTERFACE_NAME_LOOKUP_H
#define REFERENCE_WS_INTERFACE_NAME_LOOKUP_H

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace reference::ws {

using Addresses = boost::asio::ip::tcp::resolver::results_type;
inline constexpr std::size_t kMaxLookUpThreads = 64;

using LookUpHandler = std::function<void(const boost::system::error_code&, const Addresses&)>;

// Who lets go of what it returns does not want the answer any more: a look-up that has not begun by then is left out,
// and ends in operation_aborted. host may be an address in digits, which needs no look-up. Throws std::bad_alloc, or
// std::system_error when the thread cannot be started; the handler is not called then.
std::shared_ptr<const void> LookUp(boost::asio::io_context& context, const std::string& host, std::uint16_t port,
                                   LookUpHandler handler);

}  // namespace reference::ws

#endif

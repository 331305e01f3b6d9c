// One question to one DNS server, over UDP, straight from one of the machine's addresses.
#pragma once

#include "agent/host/NetworkFacts.h"

#include <span>

// Asks for the PTR record of `name`, twice if need be. The server's port is 53 where it is given as 0. Needs
// started sockets. Free-threaded; throws std::bad_alloc only.
Reply SendDnsQuestion(const SOCKADDR_INET& server, const SOCKADDR_INET& source, const std::string& name,
                      HANDLE stop);

// The message itself, and what a message that came back says: Answered, Refused, or Silent where it is no
// answer to this question.
std::vector<BYTE> DnsQuestionFor(const std::string& name, USHORT id);
Reply ReadDnsAnswer(std::span<const BYTE> message, USHORT id) noexcept;

#include "agent/host/DnsQuestion.h"

#include "Common/src/com/Owned.h"
#include "tests/unit/agent/FakeNetwork.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{
TEST(DnsQuestion, IsOneQuestionForAPointer)
{
    const std::vector<BYTE> expected = {0x12, 0x34, 1,   0, 0,   1,   0,   0,   0, 0, 0,  0, 1, '9',
                                        2,    'a',  'b', 4, 'a', 'r', 'p', 'a', 0, 0, 12, 0, 1};
    EXPECT_EQ(expected, DnsQuestionFor("9.ab.arpa", 0x1234));
}

std::vector<BYTE> Answer(BYTE flags, BYTE code)
{
    return {0x12, 0x34, flags, code, 0, 1, 0, 0, 0, 0, 0, 0};
}

TEST(DnsQuestion, ReadsWhatTheServerSays)
{
    EXPECT_EQ(Reply::Answered, ReadDnsAnswer(Answer(0x81, 0), 0x1234));
    EXPECT_EQ(Reply::Answered, ReadDnsAnswer(Answer(0x81, 0x83), 0x1234)) << "no such name is an answer";
    EXPECT_EQ(Reply::Refused, ReadDnsAnswer(Answer(0x81, 2), 0x1234)) << "server failure";
    EXPECT_EQ(Reply::Refused, ReadDnsAnswer(Answer(0x81, 5), 0x1234)) << "refused";
    EXPECT_EQ(Reply::Silent, ReadDnsAnswer(Answer(0x81, 0), 0x1235)) << "another question's answer";
    EXPECT_EQ(Reply::Silent, ReadDnsAnswer(Answer(0x01, 0), 0x1234)) << "a question";
    EXPECT_EQ(Reply::Silent, ReadDnsAnswer({}, 0x1234));
}

// A DNS server on this machine that gives each question the next of its answers; one with no bytes is
// silence.
class CLocalServer
{
  public:
    CLocalServer()
    {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
        Here = Address(L"127.0.0.1");
        EXPECT_EQ(0, bind(m_socket, reinterpret_cast<sockaddr*>(&Here), sizeof Here.Ipv4));
        int size = sizeof Here;
        getsockname(m_socket, reinterpret_cast<sockaddr*>(&Here), &size);
    }
    ~CLocalServer()
    {
        closesocket(m_socket);
        if (m_thread.joinable())
            m_thread.join();
        WSACleanup();
    }

    // What to change in the question to make the answer; empty for silence.
    using Make = std::vector<BYTE> (*)(const std::vector<BYTE>& question);
    void Serve(std::vector<Make> answers)
    {
        m_thread = std::thread(
            [this, answers = std::move(answers)]
            {
                for (const Make make : answers)
                {
                    std::vector<BYTE> question(512);
                    SOCKADDR_INET from = {};
                    int size = sizeof from;
                    const int read = recvfrom(m_socket, reinterpret_cast<char*>(question.data()), 512, 0,
                                              reinterpret_cast<sockaddr*>(&from), &size);
                    if (read <= 0)
                        return;
                    question.resize(static_cast<size_t>(read));
                    const std::vector<BYTE> answer = make(question);
                    sendto(m_socket, reinterpret_cast<const char*>(answer.data()),
                           static_cast<int>(answer.size()), 0, reinterpret_cast<sockaddr*>(&from), size);
                }
            });
    }

    SOCKADDR_INET Here = {};

  private:
    SOCKET m_socket = INVALID_SOCKET;
    std::thread m_thread;
};

std::vector<BYTE> AnswerTo(std::vector<BYTE> question, BYTE code)
{
    question[2] = 0x81;
    question[3] = code;
    return question;
}
std::vector<BYTE> NoSuchName(const std::vector<BYTE>& question)
{
    return AnswerTo(question, 0x83);
}
std::vector<BYTE> ServerFailure(const std::vector<BYTE>& question)
{
    return AnswerTo(question, 2);
}
std::vector<BYTE> Rubbish(const std::vector<BYTE>&)
{
    return {1, 2, 3};
}

class DnsExchange : public testing::Test
{
  protected:
    Reply Ask()
    {
        return SendDnsQuestion(m_server.Here, Address(L"127.0.0.1"), "1.0.0.127.in-addr.arpa", m_stop.Get());
    }

    CLocalServer m_server;
    CHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(DnsExchange, ServerAnswers)
{
    m_server.Serve({NoSuchName});
    EXPECT_EQ(Reply::Answered, Ask());
}

TEST_F(DnsExchange, ServerFails)
{
    m_server.Serve({ServerFailure});
    EXPECT_EQ(Reply::Refused, Ask());
}

TEST_F(DnsExchange, AsksAgainWhereTheFirstAnswerIsNone)
{
    m_server.Serve({Rubbish, NoSuchName});
    EXPECT_EQ(Reply::Answered, Ask());
}

TEST_F(DnsExchange, SilenceEnds)
{
    EXPECT_EQ(Reply::Silent, Ask());
}

TEST_F(DnsExchange, StopsWaitingOnceStopped)
{
    SetEvent(m_stop.Get());
    EXPECT_EQ(Reply::Stopped, Ask());
}

TEST_F(DnsExchange, NotSentFromAnAddressOfAnotherFamily)
{
    EXPECT_EQ(Reply::NotSent,
              SendDnsQuestion(Address(L"192.0.2.53"), Address(L"2001:db8::77"), "a", m_stop.Get()));
}
} // namespace

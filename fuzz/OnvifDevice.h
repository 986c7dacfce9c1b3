#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Stands in for an ONVIF device and the network to it: what it answers is the fuzzer's input.
class CFuzzDevice
{
public:
    /// strAnswers: response elements, one a line. A call's answers are those of its name, one after the other, and the
    /// last again and again; a call without any has a fault for its answer, or, if it changes something, an empty
    /// element.
    void SetAnswers(std::string_view strAnswers);
    /// The body of an HTTP answer to a request's, which is empty for a file: that is what the call "Get" answers, as it
    /// stands. Empty: no answer comes any more.
    std::string Answer(std::string_view strRequest);

private:
    std::string Element(std::string_view strName);

    struct tagAnswers
    {
        std::vector<std::string_view> astrElements;
        std::size_t nNext = 0;
    };
    std::map<std::string_view, tagAnswers> m_tAnswers; ///< by the name of the call
    std::size_t m_nRequests = 0;
};

/// The one that all requests go to.
CFuzzDevice& FuzzDevice();

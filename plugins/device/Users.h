#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Configuration.h"

#include <functional>
#include <map>
#include <string>

namespace device
{
/// Who may log in, and as what.
class CUsers : public CPart
{
public:
    explicit CUsers(CDevice& tDevice);

    /// eResultWrongLogin; eResultLocked.
    int Check(std::string const& strUser, std::string const& strPassword, uint32_t& dwLevel);
    /// The same for who proves that he knows the password and doesn't say it: fnIsRight answers whether his proof is
    /// that of a password.
    int Check(std::string const& strUser, std::function<bool(std::string const& strPassword)> const& fnIsRight,
              uint32_t& dwLevel);
    /// 0: there is no such user.
    uint32_t Level(std::string const& strUser) const;
    /// By name, for protocols that prove a password without sending it.
    std::map<std::string, std::string> Passwords() const;

    /// eConfigUsers, without passwords.
    tagConfigUsers Read() const;
    /// eConfigUsers: ptUsers are to be the only ones.
    int Write(tagConfigUsers const* ptUsers);
    /// Forgets who is locked.
    void UnlockAll() { m_tWrong.clear(); }
    /// The users from the factory.
    void Reset();

private:
    struct tagWrong
    {
        uint32_t dwCount = 0;
        int64_t llLockedUntilUs = 0; // 0: not locked
    };
    bool IsLocked(std::string const& strUser) const;
    tagConfigUser* Find(std::string const& strUser);

    tagConfigUsers m_tUsers{};
    std::map<std::string, tagWrong> m_tWrong;
};
} // namespace device

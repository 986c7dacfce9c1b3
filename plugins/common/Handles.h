#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

namespace plugin
{
/// All open handles: numbers that are never given twice. CObject: the base class of what they stand for. Any thread.
template <class CObject>
class CHandles
{
public:
    void* Add(std::shared_ptr<CObject> pObject)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tObjects[++m_nLast] = std::move(pObject);
        return reinterpret_cast<void*>(m_nLast);
    }
    /// Null: nothing of this class is open under the handle.
    template <class Object>
    std::shared_ptr<Object> Find(void* hObject) const
    {
        const std::shared_lock tLock(m_tMutex);
        const auto it = m_tObjects.find(reinterpret_cast<uintptr_t>(hObject));
        return it == m_tObjects.end() ? nullptr : std::dynamic_pointer_cast<Object>(it->second);
    }
    /// As Find; the handle names nothing any more.
    template <class Object>
    std::shared_ptr<Object> Take(void* hObject)
    {
        const std::lock_guard tLock(m_tMutex);
        const auto it = m_tObjects.find(reinterpret_cast<uintptr_t>(hObject));
        auto pObject = it == m_tObjects.end() ? nullptr : std::dynamic_pointer_cast<Object>(it->second);
        if (pObject)
        {
            m_tObjects.erase(it);
        }
        return pObject;
    }
    /// How many objects of this class fnCounts says true of.
    template <class Object, class F>
    uint32_t Count(F fnCounts) const
    {
        const std::shared_lock tLock(m_tMutex);
        uint32_t dwCount = 0;
        for (auto const& [nHandle, pAny] : m_tObjects)
        {
            auto const* const pObject = dynamic_cast<Object const*>(pAny.get());
            dwCount += pObject && fnCounts(*pObject) ? 1 : 0;
        }
        return dwCount;
    }
    /// One of this class that fnIs says true of; null: there is none. fnIs mustn't open or close handles.
    template <class Object, class F>
    std::shared_ptr<Object> First(F fnIs) const
    {
        const std::shared_lock tLock(m_tMutex);
        for (auto const& [nHandle, pAny] : m_tObjects)
        {
            const auto pObject = std::dynamic_pointer_cast<Object>(pAny);
            if (pObject && fnIs(*pObject))
            {
                return pObject;
            }
        }
        return nullptr;
    }
    std::vector<std::shared_ptr<CObject>> TakeAll()
    {
        std::vector<std::shared_ptr<CObject>> apAll;
        const std::lock_guard tLock(m_tMutex);
        for (auto& [nHandle, pObject] : m_tObjects)
        {
            apAll.push_back(std::move(pObject));
        }
        m_tObjects.clear();
        return apAll;
    }

private:
    mutable std::shared_mutex m_tMutex;
    std::map<uintptr_t, std::shared_ptr<CObject>> m_tObjects;
    uintptr_t m_nLast = 0;
};
} // namespace plugin

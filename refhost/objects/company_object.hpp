// The company that the host has open, as add-ins see it: from here on down to the values in its data file records. What
// is handed out does not keep the company open; once that is closed, every call returns CO_E_OBJNOTCONNECTED.
#pragma once

#include <memory>

#include "com/object_root.hpp"
#include "hostapi/application.hpp"
#include "refhost/objects/host.hpp"

namespace paylodge::refhost {

inline constexpr HRESULT kRecordExists = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0411);
inline constexpr HRESULT kNoSuchRecord = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0412);
// The record has to be locked for this, by the object that is called.
inline constexpr HRESULT kNotLocked = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0413);

class CCompany : public IHostCompany {
  public:
    using Row = InterfaceRow<CCompany>;
    static constexpr std::array kInterfaces = {Row::Of<IUnknown, IHostCompany>()};

    explicit CCompany(const std::shared_ptr<OpenCompany>& company) : company_(company) {}

    // Every category has records, if only none yet. E_INVALIDARG without a name.
    STDMETHODIMP GetDataFileRecords(BSTR category, IHostDataFileRecords** records) override;

  protected:
    ~CCompany() = default;

  private:
    std::weak_ptr<OpenCompany> company_;
};

}  // namespace paylodge::refhost

// The host's application, found by those who know the class of its locator; and from it the way to the company's data
// file records.
#pragma once

#include "com/class_object.hpp"
#include "hostapi/application.hpp"

namespace paylodge::refhost {

class CApplicationLocator : public IHostApplicationLocator,
                            public CComCoClass<CApplicationLocator, &kHostApplicationLocatorClass> {
  public:
    using Row = InterfaceRow<CApplicationLocator>;
    static constexpr std::array kInterfaces = {Row::Of<IHostApplicationLocator>()};

    // The application of this process, with the interfaces IHostApplication and IHostFolders.
    STDMETHODIMP GetRunningApplication(IUnknown** application) override;

  protected:
    ~CApplicationLocator() = default;
};

}  // namespace paylodge::refhost

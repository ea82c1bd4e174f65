#include "support/FakeServices.h"

namespace stowhaven::test {

namespace {

template <typename Double, typename Setter>
Double& install(Setter setter) {
    auto service = std::make_unique<Double>();
    Double& reference = *service;
    (Platform::current().*setter)(std::move(service));
    return reference;
}

}  // namespace

FakeServices::FakeServices()
    : shell(install<RecordingShell>(&Platform::setShell)),
      clock(install<FixedClock>(&Platform::setClock)),
      reachability(install<FakeReachability>(&Platform::setReachability)),
      battery(install<FakeBattery>(&Platform::setBattery)),
      sounds(install<RecordingSounds>(&Platform::setSounds)),
      calendar(install<RecordingCalendar>(&Platform::setCalendar)),
      mail(install<RecordingMail>(&Platform::setMail)),
      systemNotifications(install<RecordingSystemNotifications>(&Platform::setSystemNotifications)),
      contactsAccess(install<FakeContactsAccess>(&Platform::setContactsAccess)) {}

FakeServices::~FakeServices() {
    Platform& platform = Platform::current();
    std::unique_ptr<Platform> host = Platform::host();
    platform = std::move(*host);
}

}  // namespace stowhaven::test

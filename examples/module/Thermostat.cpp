// A module's component: a thermostat that publishes its members and methods through a property
// map. Everything a script can do with it is in the table below.

#include "Thermostat.h"

#include <algorithm>

namespace {

class CThermostat : public CVeskComponent {
    VESK_DECLARE_PROPERTY_MAP(CThermostat)

public:
    explicit CThermostat(const CDorlString& room) : CVeskComponent("thermostat"), m_sRoom(room)
    {
        VESK_FILL_PROPERTY_MAP();
    }

    // Adjust(by, [max]): moves the target by a number of degrees, never above max (30 unless
    // given), and answers the new target.
    int Adjust(CVeskCommandContext* context)
    {
        double by = 0;
        double max = 30;
        context->GetParam("by", &by, 0);
        context->GetParam("max", &max, 1);
        if (!context->CanProceed(0))
            return 1; // the context has told the caller what was wrong
        m_dTarget = std::min(m_dTarget + by, max);
        context->SetReturnValueNoRef(CVeskGdDouble::Allocate(m_dTarget));
        return 1;
    }

    // Report([unit], [brief]): the state as a line of text, in "C" (the default) or "F".
    int Report(CVeskCommandContext* context)
    {
        CDorlString unit("C");
        int bBrief = 0;
        context->GetParam("unit", &unit, 1);
        context->GetParam("brief", &bBrief, 1);
        if (!context->CanProceed(0))
            return 1;
        if (unit != "C" && unit != "F") {
            context->OutputErrorString("Report: unknown unit '%s'", static_cast<const char*>(unit));
            return 1;
        }
        auto shown = [&](double celsius) { return unit == "F" ? celsius * 9 / 5 + 32 : celsius; };
        const char* pszUnit = unit;
        CDorlString text;
        if (!m_bOnline)
            text.Format("%s: no reading yet", static_cast<const char*>(m_sRoom));
        else if (bBrief)
            text.Format("%.1f %s", shown(m_dTemperature), pszUnit);
        else
            text.Format("%s: %.1f %s, target %.1f %s, %s", static_cast<const char*>(m_sRoom),
                        shown(m_dTemperature), pszUnit, shown(m_dTarget), pszUnit,
                        m_dTemperature < m_dTarget ? "heating" : "idle");
        context->SetReturnValueNoRef(CVeskGdString::Allocate(text));
        return 1;
    }

    // "temperature": the last measurement, None until there is one. Writing a Number stands
    // in for the sensor; anything else is refused.
    int Temperature(CVeskGenericData** ppValue, int bSet)
    {
        if (bSet) {
            if ((*ppValue)->GetType() != CVeskGenericData::dtNumber)
                return 0;
            m_dTemperature = static_cast<CVeskGdDouble*>(*ppValue)->m_dValue;
            m_bOnline = 1;
            return 1;
        }
        if (!m_bOnline)
            return 0; // *ppValue keeps the None it came with
        (*ppValue)->Release();
        *ppValue = CVeskGdDouble::Allocate(m_dTemperature);
        return 1;
    }

    CDorlString m_sRoom;
    double m_dTarget = 20;
    double m_dTemperature = 0;
    int m_bOnline = 0; // set by the first measurement
};

VESK_BEGIN_PROPERTY_MAP(CThermostat, CVeskComponent)
    VESK_STRING_PROPERTY("room", m_sRoom, VeskReadWrite)
    VESK_DOUBLE_PROPERTY("target", m_dTarget, VeskReadWrite)
    VESK_BOOLEAN_PROPERTY("online", m_bOnline, VeskReadOnly)
    VESK_NOTIFIED_GD_PROPERTY("temperature", Temperature)
    VESK_FUNCTION_PROPERTY("Adjust", Adjust)
    VESK_FUNCTION_PROPERTY("Report", Report)
VESK_END_PROPERTY_MAP()

} // namespace

IVeskCommand* ThermostatCreate(const char* room)
{
    CThermostat* thermostat = new CThermostat(room);
    IVeskCommand* command = nullptr;
    thermostat->ExternalQueryInterface(&IID_IVeskCommand, reinterpret_cast<void**>(&command));
    thermostat->Release(); // the interface holds the object now
    return command;
}

#include "tests/support/introspection.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace
{
std::string attribute(const std::string& tag, const std::string& name)
{
    std::smatch match;
    return std::regex_search(tag, match, std::regex(" " + name + "=\"([^\"]*)\"")) ? match[1].str()
                                                                                   : "";
}
} // namespace

std::map<std::string, Interface> introspected(const std::string& xml)
{
    std::map<std::string, Interface> interfaces;
    Interface* interface = nullptr;
    std::string method;
    std::string event;
    const std::regex tags("<(/?)(interface|method|signal|arg)\\b([^>]*)>");
    for (std::sregex_iterator it(xml.begin(), xml.end(), tags), end; it != end; ++it) {
        const bool closes = (*it)[1].length() > 0;
        const std::string kind = (*it)[2];
        const std::string tag = (*it)[3];
        if (kind == "interface" && !closes) {
            interface = &interfaces[attribute(tag, "name")];
        } else if (kind == "method") {
            method = closes ? "" : attribute(tag, "name");
            if (!closes)
                interface->methods[method] = ">";
        } else if (kind == "signal") {
            event = closes ? "" : attribute(tag, "name");
            if (!closes)
                interface->events[event] = "";
        } else if (kind == "arg" && !method.empty()) {
            std::string& types = interface->methods[method];
            const bool isResult = attribute(tag, "direction") == "out";
            types.insert(isResult ? types.size() : types.find('>'), attribute(tag, "type"));
        } else if (kind == "arg") {
            interface->events[event] += attribute(tag, "type");
        }
    }
    return interfaces;
}

std::map<std::string, Interface> introspectedFile(const std::string& interface)
{
    std::stringstream xml;
    xml << std::ifstream(std::string(OVIK_DBUS_INTERFACE_DIR) + "/" + interface + ".xml").rdbuf();
    return introspected(xml.str());
}

std::vector<std::string> interfaceNames()
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(OVIK_DBUS_INTERFACE_DIR))
        names.push_back(file.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

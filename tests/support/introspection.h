#pragma once

#include <map>
#include <string>
#include <vector>

/// Method names with "arguments>results", signal names with their arguments.
using Members = std::map<std::string, std::string>;

struct Interface {
    Members methods;
    Members events;
};

/// The interfaces that an introspection text declares.
std::map<std::string, Interface> introspected(const std::string& xml);

/// The interfaces of one of the platform's introspection files; it should declare only one.
std::map<std::string, Interface> introspectedFile(const std::string& interface);

/// The names of all the platform's interface files, sorted.
std::vector<std::string> interfaceNames();

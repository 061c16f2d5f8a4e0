#pragma once

namespace standin
{

class Core;
struct Object;

} // namespace standin

// placeholder, replaced with the rights vocabulary
#pragma once
